// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"

namespace zofra {

/// The fixed control addresses on a player that announces none.
struct ControlPath {
    static constexpr const char* transport = "/MediaRenderer/AVTransport/Control";
    static constexpr const char* rendering = "/MediaRenderer/RenderingControl/Control";
    static constexpr const char* topology = "/ZoneGroupTopology/Control";
};

/// An order to `service` with its version ("AVTransport:1"); `body` is the action's argument elements.
[[nodiscard]] HttpRequest soapRequest(const QUrl& endpoint, const QString& service, const QString& action,
                                      const QString& body);

/// `text` as XML character data.
[[nodiscard]] QString escapedForXml(const QString& text);

/// The argument elements of SetAVTransportURI: the address, and an item of a fixed title.
[[nodiscard]] QString setTransportUriBody(const QString& uri);
/// The argument elements of SetVolume; `percent` is clamped to 0...100.
[[nodiscard]] QString setVolumeBody(int percent);

} // namespace zofra
