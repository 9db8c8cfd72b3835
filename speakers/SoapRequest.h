// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"

#include <algorithm>
#include <chrono>

namespace zofra {

/// The fixed control addresses on a player that announces none.
struct ControlPath {
    static constexpr const char* transport = "/MediaRenderer/AVTransport/Control";
    static constexpr const char* rendering = "/MediaRenderer/RenderingControl/Control";
    static constexpr const char* topology = "/ZoneGroupTopology/Control";
};

/// An order to `service` with its version ("AVTransport:1"); `body` is the action's argument elements.
[[nodiscard]] inline HttpRequest soapRequest(const QUrl& endpoint, const QString& service,
                                             const QString& action, const QString& body) {
    const auto actionUri = u"\"urn:schemas-upnp-org:service:%1#%2\""_qs.arg(service, action);
    const auto envelope = u"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                          u"<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\">\n"
                          u"  <s:Body>\n"
                          u"    <u:%1 xmlns:u=\"urn:schemas-upnp-org:service:%2\">%3</u:%1>\n"
                          u"  </s:Body>\n"
                          u"</s:Envelope>"_qs.arg(action, service, body);
    return {.method = "POST",
            .url = endpoint,
            .headers = {{"Content-Type", "text/xml; charset=\"utf-8\""}, {"SOAPACTION", actionUri.toUtf8()}},
            .body = envelope.toUtf8(),
            .timeout = std::chrono::seconds(5),
            .purpose = HttpRequest::Purpose::order,
            .route = HttpRequest::Route::direct};
}

/// `text` as XML character data.
[[nodiscard]] inline QString escapedForXml(const QString& text) {
    // HTML escapes the same but for one.
    return text.toHtmlEscaped().replace(u'\'', QLatin1String("&apos;"));
}

/// The argument elements of SetAVTransportURI: the address, and an item of a fixed title.
[[nodiscard]] inline QString setTransportUriBody(const QString& uri) {
    // Text inside of an element, hence escaped once already.
    const auto metadata = u"&lt;DIDL-Lite xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
                          u" xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\""
                          u" xmlns:r=\"urn:schemas-rinconnetworks-com:metadata-1-0/\""
                          u" xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\"&gt;"
                          u"&lt;item id=\"-1\" parentID=\"-1\" restricted=\"true\"&gt;"
                          u"&lt;dc:title&gt;Zofra Radio&lt;/dc:title&gt;"
                          u"&lt;upnp:class&gt;object.item.audioItem.audioBroadcast&lt;/upnp:class&gt;"
                          u"&lt;/item&gt;&lt;/DIDL-Lite&gt;"_qs;
    return u"<InstanceID>0</InstanceID>\n<CurrentURI>%1</CurrentURI>\n"
           u"<CurrentURIMetaData>%2</CurrentURIMetaData>"_qs.arg(escapedForXml(uri), metadata);
}

/// The argument elements of SetVolume; `percent` is clamped to 0...100.
[[nodiscard]] inline QString setVolumeBody(int percent) {
    return u"<InstanceID>0</InstanceID><Channel>Master</Channel><DesiredVolume>%1</DesiredVolume>"_qs.arg(
        std::clamp(percent, 0, 100));
}

} // namespace zofra
