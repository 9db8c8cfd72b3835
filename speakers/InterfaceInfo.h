// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LocalNetwork.h"

#include <QList>

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
    [[nodiscard]] bool reaches(const QString& host) const;

    friend bool operator==(const InterfaceInfo&, const InterfaceInfo&) = default;
};

/// Those that are up, running and neither loopback nor point-to-point, in order; one record per IPv4 address.
[[nodiscard]] QList<InterfaceInfo> activeIPv4Interfaces(const std::vector<InterfaceAddress>& addresses);

} // namespace zofra
