// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/ServiceHosts.h"

#include <QList>
#include <QUrl>

#include <vector>

namespace zofra::doctor {

/// One host, and the addresses that the program asks there.
struct HostTarget {
    enum class Kind { stream, live, onAir, scraper };
    Kind kind = Kind::stream;
    /// `host` or `host:port`, as it is configured.
    QString host;
    /// Keys of the endpoints file that name it here: "zofra_aac".
    QStringList keys;
    /// Without duplicates.
    QList<QUrl> urls;
    /// At the on-air service, the station that is asked for.
    QString rpId;
};

/// In one word, for scripts: "stream", "live", "onair", "scraper".
[[nodiscard]] QString areaOf(HostTarget::Kind kind);

/// Every host that the program would ask, streams first, in the order of the stations.
[[nodiscard]] std::vector<HostTarget> hostTargets(const ServiceHosts& hosts);

} // namespace zofra::doctor
