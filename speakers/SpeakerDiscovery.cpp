// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SpeakerDiscovery.h"

#include "platform/ForeignText.h"
#include "speakers/PlainOrder.h"
#include "speakers/SpeakerLookup.h"

#include <algorithm>
#include <net/if.h>

namespace zofra {

QList<InterfaceInfo> activeIPv4Interfaces(const std::vector<InterfaceAddress>& addresses) {
    constexpr unsigned int mask = IFF_UP | IFF_LOOPBACK | IFF_POINTOPOINT | IFF_RUNNING;
    QList<InterfaceInfo> interfaces;
    for (const auto& address : addresses) {
        if (address.family != AF_INET || (address.flags & mask) != (IFF_UP | IFF_RUNNING))
            continue;
        const bool canBroadcast = (address.flags & IFF_BROADCAST) != 0;
        interfaces.append({address.name, address.ip, canBroadcast ? address.broadcast : std::nullopt});
    }
    return interfaces;
}

/// What the searches of one run share; they may still be under way when the run is told to end.
struct SpeakerDiscovery::Search {
    explicit Search(std::shared_ptr<WaitPoint> waitPoint)
        : group(std::move(waitPoint)) {}

    PlayerLocked<QSet<QUrl>> found;
    PlayerLocked<QList<InterfaceInfo>> silent;
    DispatchGroup group;
};

void SpeakerDiscovery::runDiscovery(bool forceSubnetScan) {
    const auto interfaces = activeIPv4Interfaces(m_background->interfaceAddresses());
    const auto search = std::make_shared<Search>(m_background->waitPoint());
    searchEverywhere(interfaces, search);
    if (!search->group.wait())
        return;

    auto found = search->found.value();
    m_background->log(QStringLiteral("SSDP-Beschreibungen: ") + quotedList(sortedAddresses(found)));
    const auto toScan = forceSubnetScan ? interfaces : search->silent.value();
    for (const auto& interface : toScan) {
        if (interface.broadcast)
            found.unite(probeSubnet(interface.ip));
    }
    const auto speakers = SpeakerLookup(m_background).discoverSpeakers(withKnownSpeakers(found));
    if (m_background->ended())
        return;
    if (speakers.isEmpty()) {
        m_background->log(QStringLiteral("Keine erreichbaren Netzwerk-Player gefunden."));
        return;
    }
    m_background->clearLocalNetworkDenial();
    m_background->applySpeakers(speakers);
}

void SpeakerDiscovery::searchEverywhere(const QList<InterfaceInfo>& interfaces,
                                        const std::shared_ptr<Search>& search) {
    for (const auto& interface : interfaces) {
        search->group.enter();
        const auto leave = finally([search] { search->group.leave(); });
        m_background->async([self = shared_from_this(), interface, search, leave] {
            const auto urls = self->searchViaSSDP(interface);
            search->found.with([&urls](QSet<QUrl>& found) { found.unite(urls); });
            if (urls.isEmpty())
                search->silent.with([&interface](auto& silent) { silent.append(interface); });
            leave->run();
        });
    }
}

QList<QUrl> SpeakerDiscovery::withKnownSpeakers(const QSet<QUrl>& found) const {
    // Those already known come first: they are read again even when they did not answer, and even when
    // somebody answers with more addresses than a run looks at.
    QList<QUrl> addresses;
    const auto known = m_background->allSpeakers.value();
    for (const auto& speaker : known)
        addresses.append(speaker.deviceDescriptionURL());
    addresses.append(found.values());
    return addresses;
}

} // namespace zofra
