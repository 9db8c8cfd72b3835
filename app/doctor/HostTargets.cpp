// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/HostTargets.h"

#include "metadata/LiveSocket.h"
#include "stations/RadioStation.h"
#include "stations/ServiceHosts.h"

#include <algorithm>
#include <array>

namespace zofra::doctor {

namespace {

const QString https = QStringLiteral("https");

/// Adds an address to the target of that host and kind, which is made when it is the first.
HostTarget& add(std::vector<HostTarget>& targets, HostTarget::Kind kind, const QString& host,
                const QString& key, const QUrl& url) {
    auto found = std::find_if(targets.begin(), targets.end(), [&](const HostTarget& target) {
        return target.kind == kind && target.host == host;
    });
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
        add(targets, HostTarget::Kind::stream, hosts.streamHost(name, StreamKind::aac),
            name + QStringLiteral("_aac"), station.streamAAC(hosts));
        add(targets, HostTarget::Kind::stream, hosts.streamHost(name, StreamKind::mp3),
            name + QStringLiteral("_mp3"), station.streamMP3(hosts));
    }
}

/// The live feed's address as plain HTTP: its server answers that too, if only with a refusal.
void addLiveFeed(std::vector<HostTarget>& targets, const ServiceHosts& hosts) {
    auto url = liveSocketUrl(hosts.liveSocketHost());
    if (!url)
        return;
    url->setScheme(https);
    add(targets, HostTarget::Kind::live, hosts.liveSocketHost(), QStringLiteral("live_socket"), *url);
}

void addOnAir(std::vector<HostTarget>& targets, const ServiceHosts& hosts) {
    for (const RadioStation station : RadioStation::allCases) {
        const auto rpId = station.radioplayerId();
        const auto url =
            rpId ? serviceUrl(https, hosts.onAirHost(), QStringLiteral("/056/qp/v3/onair?rpIds=") + *rpId)
                 : std::nullopt;
        if (!url)
            continue;
        add(targets, HostTarget::Kind::onAir, hosts.onAirHost(), QStringLiteral("on_air"), *url).rpId = *rpId;
        return;
    }
}

void addScraper(std::vector<HostTarget>& targets, const ServiceHosts& hosts) {
    for (const RadioStation station : RadioStation::allCases) {
        const auto path = station.scraperPath();
        const auto url = path ? serviceUrl(https, hosts.scraperHost(), *path) : std::nullopt;
        if (!url)
            continue;
        add(targets, HostTarget::Kind::scraper, hosts.scraperHost(), QStringLiteral("scraper"), *url);
        return;
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
    addLiveFeed(targets, hosts);
    addOnAir(targets, hosts);
    addScraper(targets, hosts);
    return targets;
}

} // namespace zofra::doctor
