// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SoapRequest.h"

#include <algorithm>
#include <chrono>

namespace zofra {

namespace {

constexpr std::chrono::seconds soapTimeout{5};

/// Text inside of an element, hence escaped once already; the same title for every station.
const QString metadata = u"&lt;DIDL-Lite xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
                         u" xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\""
                         u" xmlns:r=\"urn:schemas-rinconnetworks-com:metadata-1-0/\""
                         u" xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\"&gt;"
                         u"&lt;item id=\"-1\" parentID=\"-1\" restricted=\"true\"&gt;"
                         u"&lt;dc:title&gt;Zofra Radio&lt;/dc:title&gt;"
                         u"&lt;upnp:class&gt;object.item.audioItem.audioBroadcast&lt;/upnp:class&gt;"
                         u"&lt;/item&gt;&lt;/DIDL-Lite&gt;"_qs;

/// The envelope around an action's argument elements, as UTF-8.
QByteArray soapEnvelope(const QString& service, const QString& action, const QString& body) {
    return u"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           u"<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\">\n"
           u"  <s:Body>\n"
           u"    <u:%1 xmlns:u=\"urn:schemas-upnp-org:service:%2\">%3</u:%1>\n"
           u"  </s:Body>\n"
           u"</s:Envelope>"_qs.arg(action, service, body)
               .toUtf8();
}

} // namespace

HttpRequest soapRequest(const QUrl& endpoint, const QString& service, const QString& action,
                        const QString& body) {
    const QString actionUri = u"\"urn:schemas-upnp-org:service:"_qs + service + u'#' + action + u'"';
    return {.method = "POST",
            .url = endpoint,
            .headers = {{"Content-Type", "text/xml; charset=\"utf-8\""}, {"SOAPACTION", actionUri.toUtf8()}},
            .body = soapEnvelope(service, action, body),
            .timeout = soapTimeout,
            .purpose = HttpRequest::Purpose::order,
            .route = HttpRequest::Route::direct};
}

QString escapedForXml(const QString& text) {
    // HTML escapes the same but for one.
    return text.toHtmlEscaped().replace(u'\'', QLatin1String("&apos;"));
}

QString setTransportUriBody(const QString& uri) {
    return u"<InstanceID>0</InstanceID>\n<CurrentURI>%1</CurrentURI>\n"
           u"<CurrentURIMetaData>%2</CurrentURIMetaData>"_qs.arg(escapedForXml(uri), metadata);
}

QString setVolumeBody(int percent) {
    return u"<InstanceID>0</InstanceID><Channel>Master</Channel><DesiredVolume>%1</DesiredVolume>"_qs.arg(
        std::clamp(percent, 0, 100));
}

} // namespace zofra
