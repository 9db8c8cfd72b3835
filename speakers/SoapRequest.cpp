// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SoapRequest.h"

#include <algorithm>
#include <chrono>

namespace zofra {

namespace {

constexpr std::chrono::seconds soapTimeout{5};

/// Text inside of an element, hence escaped once already; the same title for every station.
QString metadata() {
    return QStringLiteral("&lt;DIDL-Lite xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
                          " xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\""
                          " xmlns:r=\"urn:schemas-rinconnetworks-com:metadata-1-0/\""
                          " xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\"&gt;"
                          "&lt;item id=\"-1\" parentID=\"-1\" restricted=\"true\"&gt;"
                          "&lt;dc:title&gt;Zofra Radio&lt;/dc:title&gt;"
                          "&lt;upnp:class&gt;object.item.audioItem.audioBroadcast&lt;/upnp:class&gt;"
                          "&lt;/item&gt;&lt;/DIDL-Lite&gt;");
}

/// The envelope around an action's argument elements, as UTF-8.
QByteArray soapEnvelope(const QString& service, const QString& action, const QString& body) {
    const QString envelope =
        QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                       "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\">\n"
                       "  <s:Body>\n"
                       "    <u:") +
        action + QStringLiteral(" xmlns:u=\"urn:schemas-upnp-org:service:") + service +
        QStringLiteral("\">") + body + QStringLiteral("</u:") + action +
        QStringLiteral(">\n"
                       "  </s:Body>\n"
                       "</s:Envelope>");
    return envelope.toUtf8();
}

} // namespace

HttpRequest soapRequest(const QUrl& endpoint, const QString& service, const QString& action,
                        const QString& body) {
    HttpRequest request;
    request.method = QByteArrayLiteral("POST");
    request.url = endpoint;
    const QString actionUri =
        QStringLiteral("\"urn:schemas-upnp-org:service:") + service + u'#' + action + u'"';
    request.headers = {
        {QByteArrayLiteral("Content-Type"), QByteArrayLiteral("text/xml; charset=\"utf-8\"")},
        {QByteArrayLiteral("SOAPACTION"), actionUri.toUtf8()},
    };
    request.body = soapEnvelope(service, action, body);
    request.timeout = soapTimeout;
    request.purpose = HttpRequest::Purpose::order;
    request.route = HttpRequest::Route::direct;
    return request;
}

QString escapedForXml(const QString& text) {
    // HTML escapes the same but for one.
    return text.toHtmlEscaped().replace(u'\'', QLatin1String("&apos;"));
}

QString setTransportUriBody(const QString& uri) {
    return QStringLiteral("<InstanceID>0</InstanceID>\n<CurrentURI>") + escapedForXml(uri) +
           QStringLiteral("</CurrentURI>\n<CurrentURIMetaData>") + metadata() +
           QStringLiteral("</CurrentURIMetaData>");
}

QString setVolumeBody(int percent) {
    return QStringLiteral("<InstanceID>0</InstanceID><Channel>Master</Channel><DesiredVolume>") +
           QString::number(std::clamp(percent, 0, 100)) + QStringLiteral("</DesiredVolume>");
}

} // namespace zofra
