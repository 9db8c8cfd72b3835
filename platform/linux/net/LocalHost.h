// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <netinet/in.h>

namespace zofra {

/// Whether an IPv4 address, as a number, is a loopback, link-local or private one.
[[nodiscard]] inline bool isLocalAddress(std::uint32_t address) {
    struct Network {
        std::uint32_t address;
        int length;
    };
    constexpr std::array networks{Network{0x7f000000U, 8}, Network{0x0a000000U, 8}, Network{0xac100000U, 12},
                                  Network{0xc0a80000U, 16}, Network{0xa9fe0000U, 16}};
    return std::ranges::any_of(networks, [address](const Network& network) {
        return (address ^ network.address) >> (32 - network.length) == 0;
    });
}

/// Whether a URL's host lies on this computer or in the home: a loopback, link-local or private address, or a
/// name that only a home network knows. Nothing is looked up.
[[nodiscard]] inline bool isLocalHost(const QString& host) {
    QString name = host;
    if (name.startsWith(u'[') && name.endsWith(u']'))
        name = name.sliced(1).chopped(1);
    const auto text = name.toLatin1();
    in_addr ipv4{};
    if (inet_pton(AF_INET, text.constData(), &ipv4) == 1)
        return isLocalAddress(ntohl(ipv4.s_addr));
    in6_addr ipv6{};
    const auto withoutZone = text.first((text + '%').indexOf('%'));
    if (inet_pton(AF_INET6, withoutZone.constData(), &ipv6) == 1)
        return IN6_IS_ADDR_V4MAPPED(&ipv6) ? isLocalAddress(ntohl(ipv6.s6_addr32[3]))
                                           : IN6_IS_ADDR_LOOPBACK(&ipv6) || IN6_IS_ADDR_LINKLOCAL(&ipv6) ||
                                                 (ipv6.s6_addr[0] & 0xfeU) == 0xfcU;
    name = name.toLower();
    if (name.endsWith(u'.'))
        name.chop(1);
    if (!name.contains(u'.'))
        return true;
    constexpr std::array homes{QLatin1String(".localhost"), QLatin1String(".local"),
                               QLatin1String(".lan"),       QLatin1String(".home"),
                               QLatin1String(".internal"),  QLatin1String(".home.arpa")};
    return std::ranges::any_of(homes, [&name](QLatin1String home) { return name.endsWith(home); });
}

} // namespace zofra
