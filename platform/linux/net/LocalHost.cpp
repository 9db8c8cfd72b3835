// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/LocalHost.h"

#include <QHostAddress>

#include <algorithm>
#include <array>

namespace zofra {

namespace {

bool isPrivate(const QHostAddress& address) {
    bool isIpv4 = false;
    const QHostAddress ipv4(address.toIPv4Address(&isIpv4));
    if (!isIpv4)
        return address.isUniqueLocalUnicast();
    return ipv4.isInSubnet(QHostAddress(0x0a000000U), 8) || ipv4.isInSubnet(QHostAddress(0xac100000U), 12) ||
           ipv4.isInSubnet(QHostAddress(0xc0a80000U), 16);
}

} // namespace

bool isLocalHost(const QString& host) {
    QString name = host;
    if (name.startsWith(u'[') && name.endsWith(u']'))
        name = name.sliced(1).chopped(1);
    QHostAddress address;
    if (address.setAddress(name))
        return address.isLoopback() || address.isLinkLocal() || isPrivate(address);
    name = name.toLower();
    if (name.endsWith(u'.'))
        name.chop(1);
    if (!name.contains(u'.'))
        return true;
    constexpr std::array homes{QLatin1String(".localhost"), QLatin1String(".local"),
                               QLatin1String(".lan"),       QLatin1String(".home"),
                               QLatin1String(".internal"),  QLatin1String(".home.arpa")};
    return std::any_of(homes.begin(), homes.end(),
                       [&name](QLatin1String home) { return name.endsWith(home); });
}

} // namespace zofra
