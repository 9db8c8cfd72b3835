// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

namespace zofra {

/// The fixed control addresses on a player that announces none.
struct ControlPath {
    static constexpr const char* transport = "/MediaRenderer/AVTransport/Control";
    static constexpr const char* rendering = "/MediaRenderer/RenderingControl/Control";
    static constexpr const char* topology = "/ZoneGroupTopology/Control";
};

/// The envelope around an action's argument elements, as UTF-8.
[[nodiscard]] QByteArray soapEnvelope(const QString& service, const QString& action, const QString& body);

/// A control request, as an order whose answer's body is of no interest: `service` with its version, for
/// example "AVTransport:1"; `body` the argument elements.
[[nodiscard]] HttpRequest soapRequest(const QUrl& endpoint, const QString& service, const QString& action,
                                      const QString& body);

/// `text` as XML character data.
[[nodiscard]] QString escapedForXml(QString text);

/// The argument elements of SetAVTransportURI: the address, and an item of a fixed title.
[[nodiscard]] QString setTransportUriBody(const QString& uri);
/// The argument elements of SetVolume; `percent` is clamped to 0...100.
[[nodiscard]] QString setVolumeBody(int percent);

} // namespace zofra
