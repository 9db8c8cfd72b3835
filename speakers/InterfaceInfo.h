// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LocalNetwork.h"

#include <QList>

#include <cstdint>
#include <optional>
#include <vector>

namespace zofra {

/// One usable IPv4 interface.
struct InterfaceInfo {
    QString name;
    /// Dotted decimal.
    QString ip;
    /// Dotted decimal; absent when the interface cannot broadcast.
    std::optional<QString> broadcast;
    int prefixLength = 24;

    /// Whether `host` is an IPv4 address of the interface's network.
    [[nodiscard]] bool reaches(const QString& host) const {
        const auto own = numberOf(ip);
        const auto other = numberOf(host);
        return own && other && static_cast<std::uint64_t>(*own ^ *other) >> (32 - prefixLength) == 0;
    }

    friend bool operator==(const InterfaceInfo&, const InterfaceInfo&) = default;

private:
    /// The number that a dotted decimal address spells.
    [[nodiscard]] static std::optional<std::uint32_t> numberOf(const QString& address) {
        const auto pieces = address.split(u'.');
        std::uint32_t number = 0;
        for (const auto& piece : pieces) {
            bool isNumber = false;
            const auto value = piece.toUShort(&isNumber);
            if (!isNumber || value > 255 || piece.size() > 3)
                return std::nullopt;
            number = number << 8U | value;
        }
        return pieces.size() == 4 ? std::optional(number) : std::nullopt;
    }
};

/// Those that are up, running and neither loopback nor point-to-point, in order; one record per IPv4 address.
[[nodiscard]] inline QList<InterfaceInfo>
activeIPv4Interfaces(const std::vector<InterfaceAddress>& addresses) {
    using Address = InterfaceAddress;
    constexpr auto mask = Address::up | Address::loopback | Address::pointToPoint | Address::running;
    QList<InterfaceInfo> interfaces;
    for (const auto& address : addresses) {
        if (address.family != Address::ipv4 || (address.flags & mask) != (Address::up | Address::running))
            continue;
        const bool canBroadcast = (address.flags & Address::canBroadcast) != 0;
        interfaces.append({address.name, address.ip, canBroadcast ? address.broadcast : std::nullopt,
                           address.prefixLength});
    }
    return interfaces;
}

} // namespace zofra
