// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/InterfaceInfo.h"

#include <cstdint>

namespace zofra {

namespace {

/// The number that a dotted decimal address spells.
std::optional<std::uint32_t> numberOf(const QString& ip) {
    constexpr unsigned int bitsPerPiece = 8;
    const auto pieces = ip.split(u'.');
    std::uint32_t number = 0;
    for (const auto& piece : pieces) {
        bool isNumber = false;
        const auto value = piece.toUShort(&isNumber);
        if (!isNumber || value >> bitsPerPiece != 0 || piece.size() > 3)
            return std::nullopt;
        number = number << bitsPerPiece | value;
    }
    return pieces.size() == 4 ? std::optional(number) : std::nullopt;
}

} // namespace

bool InterfaceInfo::reaches(const QString& host) const {
    const auto own = numberOf(ip);
    const auto other = numberOf(host);
    if (!own || !other)
        return false;
    const auto different = static_cast<std::uint64_t>(*own ^ *other);
    return different >> static_cast<unsigned int>(32 - prefixLength) == 0;
}

QList<InterfaceInfo> activeIPv4Interfaces(const std::vector<InterfaceAddress>& addresses) {
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
