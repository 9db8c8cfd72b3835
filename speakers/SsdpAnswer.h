// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace zofra::NetworkPlayerProtocol {

/// What a player says it is, as device type and as search target.
inline constexpr const char* deviceType = "urn:schemas-upnp-org:device:ZonePlayer:1";

/// The address of the device description that one search answer names.
[[nodiscard]] std::optional<QUrl> ssdpLocation(const QString& datagram);

} // namespace zofra::NetworkPlayerProtocol
