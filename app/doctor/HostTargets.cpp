// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/HostTargets.h"

#include "metadata/LiveSocket.h"
#include "metadata/OnAirItem.h"
#include "metadata/ScraperPage.h"
#include "stations/RadioStation.h"
#include "stations/ServiceHosts.h"

#include <algorithm>
#include <array>

namespace zofra::doctor {

namespace {

/// Adds an address to the target of that host and kind, which is made when it is the first.
HostTarget& add(std::vector<HostTarget>& targets, HostTarget::Kind kind, const QString& host,
                const QString& key, const QUrl& url) {
    auto found = std::ranges::find_if(
        targets, [&](const HostTarget& target) { return target.kind == kind && target.host == host; });
    if (found == targets.end())
        found = targets.insert(targets.end(), HostTarget{kind, host, {}, {}, {}});
    found->keys.append(key);
    if (!found->urls.contains(url))
        found->urls.append(url);
    return *found;
}

void addStreams(std::vector<HostTarget>& targets, const ServiceHosts& hosts) {
    using StreamKind = ServiceHosts::StreamKind;
    for (const RadioStation station : RadioStation::allCases) {
        const auto name = station.rawValue();
        add(targets, HostTarget::Kind::stream, hosts.streamHost(name, StreamKind::aac), name + u"_aac"_qs,
            station.streamAAC(hosts));
        add(targets, HostTarget::Kind::stream, hosts.streamHost(name, StreamKind::mp3), name + u"_mp3"_qs,
            station.streamMP3(hosts));
    }
}

} // namespace

QString areaOf(HostTarget::Kind kind) {
    static constexpr std::array areas{"stream", "live", "onair", "scraper"};
    return QString::fromLatin1(areas.at(static_cast<std::size_t>(kind)));
}

std::vector<HostTarget> hostTargets(const ServiceHosts& hosts) {
    std::vector<HostTarget> targets;
    addStreams(targets, hosts);
    // The live feed's address as plain HTTP: its server answers that too, if only with a refusal.
    if (auto url = liveSocketUrl(hosts.liveSocketHost())) {
        url->setScheme(u"https"_qs);
        add(targets, HostTarget::Kind::live, hosts.liveSocketHost(), u"live_socket"_qs, *url);
    }
    // Of the two others the first station says enough.
    for (const RadioStation station : RadioStation::allCases) {
        const auto rpId = station.radioplayerId();
        if (const auto url = rpId ? onAirUrl(hosts, *rpId) : std::nullopt) {
            add(targets, HostTarget::Kind::onAir, hosts.onAirHost(), u"on_air"_qs, *url).rpId = *rpId;
            break;
        }
    }
    for (const RadioStation station : RadioStation::allCases) {
        if (const auto url = scraperUrl(hosts, station)) {
            add(targets, HostTarget::Kind::scraper, hosts.scraperHost(), u"scraper"_qs, *url);
            break;
        }
    }
    return targets;
}

} // namespace zofra::doctor
