// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SpeakerDiscovery.h"

#include "platform/ForeignText.h"
#include "speakers/PlainOrder.h"
#include "speakers/SpeakerLookup.h"
#include "speakers/SsdpSearch.h"
#include "speakers/SubnetProbe.h"

#include <latch>

namespace zofra {

/// What the searches of one run share.
struct SpeakerDiscovery::Search {
    explicit Search(qsizetype count)
        : underWay(count) {}

    PlayerLocked<QSet<QUrl>> found;
    PlayerLocked<QList<InterfaceInfo>> silent;
    std::latch underWay;
};

void SpeakerDiscovery::runDiscovery(bool forceSubnetScan) const {
    // It may have waited for a thread for longer than it is wanted.
    if (m_background->ended())
        return;
    const auto interfaces = activeIPv4Interfaces(m_background->outside().network.interfaceAddresses());
    m_background->searched.set(interfaces);
    const auto search = searchEverywhere(interfaces);
    auto found = search->found.value();
    m_background->log(QStringLiteral("SSDP-Beschreibungen: ") + quotedList(sortedAddresses(found)));
    const auto toScan = forceSubnetScan ? interfaces : search->silent.value();
    for (const auto& interface : toScan) {
        if (interface.broadcast)
            found.unite(probeSubnet(m_background, interface.ip));
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

std::shared_ptr<SpeakerDiscovery::Search>
SpeakerDiscovery::searchEverywhere(const QList<InterfaceInfo>& interfaces) const {
    const auto search = std::make_shared<Search>(interfaces.size());
    for (const auto& interface : interfaces) {
        m_background->outside().tasks.async([background = m_background, interface, search] {
            const auto urls = searchViaSSDP(*background, interface);
            search->found.with([&urls](QSet<QUrl>& found) { found.unite(urls); });
            if (urls.isEmpty())
                search->silent.with([&interface](auto& silent) { silent.append(interface); });
            search->underWay.count_down();
        });
    }
    // Each search ends by itself.
    search->underWay.wait();
    return search;
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
