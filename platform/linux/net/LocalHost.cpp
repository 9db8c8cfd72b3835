// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/LocalHost.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdint>
#include <netinet/in.h>
#include <optional>

namespace zofra {

namespace {

bool isLocal(std::uint32_t address) {
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

bool isLocal(const in6_addr& address) {
    if (IN6_IS_ADDR_V4MAPPED(&address))
        return isLocal(ntohl(address.s6_addr32[3]));
    return IN6_IS_ADDR_LOOPBACK(&address) || IN6_IS_ADDR_LINKLOCAL(&address) ||
           (address.s6_addr[0] & 0xfeU) == 0xfcU;
}

/// Absent when `text` is no address.
std::optional<bool> isLocalAddress(const QByteArray& text) {
    in_addr ipv4{};
    if (inet_pton(AF_INET, text.constData(), &ipv4) == 1)
        return isLocal(ntohl(ipv4.s_addr));
    in6_addr ipv6{};
    const auto withoutZone = text.first((text + '%').indexOf('%'));
    if (inet_pton(AF_INET6, withoutZone.constData(), &ipv6) == 1)
        return isLocal(ipv6);
    return std::nullopt;
}

} // namespace

bool isLocalHost(const QString& host) {
    QString name = host;
    if (name.startsWith(u'[') && name.endsWith(u']'))
        name = name.sliced(1).chopped(1);
    if (const auto answer = isLocalAddress(name.toLatin1()))
        return *answer;
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
