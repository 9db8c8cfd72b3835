// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/LiveSocket.h"
#include "metadata/OnAirItem.h"
#include "metadata/ScraperPage.h"
#include "stations/RadioStation.h"
#include "stations/ServiceHosts.h"

#include <QList>
#include <QUrl>

#include <algorithm>
#include <array>
#include <vector>

namespace zofra::doctor {

/// One host, and the addresses that the program asks there.
struct HostTarget {
    enum class Kind { stream, live, onAir, scraper };
    Kind kind = Kind::stream;
    /// `host` or `host:port`, as it is configured.
    QString host;
    /// Keys of the endpoints file that name it here: "zofra_aac".
    QStringList keys{};
    /// Without duplicates.
    QList<QUrl> urls{};
    /// At the on-air service, the station that is asked for.
    QString rpId{};

    /// The kind in one word, for scripts: "stream", "live", "onair", "scraper".
    [[nodiscard]] QString area() const {
        static constexpr std::array areas{"stream", "live", "onair", "scraper"};
        return QString::fromLatin1(areas.at(static_cast<std::size_t>(kind)));
    }

    /// Every host that the program would ask, streams first, in the order of the stations.
    [[nodiscard]] static std::vector<HostTarget> all(const ServiceHosts& hosts) {
        using StreamKind = ServiceHosts::StreamKind;
        std::vector<HostTarget> targets;
        for (const RadioStation station : RadioStation::allCases) {
            const auto name = station.rawValue();
            add(targets, Kind::stream, hosts.streamHost(name, StreamKind::aac), name + u"_aac"_qs,
                station.streamAAC(hosts));
            add(targets, Kind::stream, hosts.streamHost(name, StreamKind::mp3), name + u"_mp3"_qs,
                station.streamMP3(hosts));
        }
        // The live feed's address as plain HTTP: its server answers that too, if only with a refusal.
        if (auto url = liveSocketUrl(hosts.liveSocketHost())) {
            url->setScheme(u"https"_qs);
            add(targets, Kind::live, hosts.liveSocketHost(), u"live_socket"_qs, *url);
        }
        // Of the two others the first station says enough.
        for (const RadioStation station : RadioStation::allCases) {
            const auto rpId = station.radioplayerId();
            if (const auto url = rpId ? onAirUrl(hosts, *rpId) : std::nullopt) {
                add(targets, Kind::onAir, hosts.onAirHost(), u"on_air"_qs, *url).rpId = *rpId;
                break;
            }
        }
        for (const RadioStation station : RadioStation::allCases) {
            if (const auto url = scraperUrl(hosts, station)) {
                add(targets, Kind::scraper, hosts.scraperHost(), u"scraper"_qs, *url);
                break;
            }
        }
        return targets;
    }

private:
    /// Adds an address to the target of that host and kind, which is made when it is the first.
    static HostTarget& add(std::vector<HostTarget>& targets, Kind kind, const QString& host,
                           const QString& key, const QUrl& url) {
        auto found = std::ranges::find_if(
            targets, [&](const HostTarget& target) { return target.kind == kind && target.host == host; });
        if (found == targets.end())
            found = targets.insert(targets.end(), HostTarget{kind, host});
        found->keys.append(key);
        if (!found->urls.contains(url))
            found->urls.append(url);
        return *found;
    }
};

} // namespace zofra::doctor
