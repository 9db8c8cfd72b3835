// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SpeakerDiscovery.h"

#include "platform/ForeignText.h"
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlainOrder.h"
#include "speakers/PlayerAddress.h"
#include "speakers/SpeakerLookup.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <latch>

namespace zofra {

namespace {

constexpr std::uint16_t ssdpPort = 1900;
constexpr std::chrono::milliseconds receiveWindow{2500};
constexpr std::chrono::milliseconds probeTimeout{1500};

QByteArray searchDatagram() {
    return QByteArrayLiteral("M-SEARCH * HTTP/1.1\r\n"
                             "HOST: 239.255.255.250:1900\r\n"
                             "MAN: \"ssdp:discover\"\r\n"
                             "MX: 1\r\n"
                             "ST: urn:schemas-upnp-org:device:ZonePlayer:1\r\n"
                             "\r\n");
}

/// Whether a failed send means that the system does not let us.
bool isBlocked(int sendErrno) {
    return sendErrno == EHOSTUNREACH || sendErrno == EPERM || sendErrno == EACCES;
}

/// Sends the search; false when the system let none of it through.
bool sendSearch(SpeakerBackground& background, UdpSearchSocket& socket, const InterfaceInfo& interface) {
    int attempts = 0;
    int blocked = 0;
    int lastErrno = 0;
    const auto attempt = [&](const QString& address) {
        ++attempts;
        const int sendErrno = socket.send(address, ssdpPort, searchDatagram());
        if (isBlocked(sendErrno)) {
            ++blocked;
            lastErrno = sendErrno;
        }
    };
    attempt(u"239.255.255.250"_qs);
    if (interface.broadcast)
        attempt(*interface.broadcast);
    background.log(u"%1: %2 Sendeversuche, %3 davon blockiert (letzter errno %4)"_qs.arg(
        interface.name, QString::number(attempts), QString::number(blocked), QString::number(lastErrno)));
    return blocked != attempts;
}

QSet<QUrl> receiveAnswers(const SpeakerBackground& background, UdpSearchSocket& socket) {
    QSet<QUrl> urls;
    const auto deadline = socket.now() + receiveWindow;
    while (socket.now() < deadline && !background.ended()) {
        const auto datagram = socket.receive(deadline);
        const auto url =
            datagram ? NetworkPlayerProtocol::ssdpLocation(QString::fromUtf8(*datagram)) : std::nullopt;
        if (url && urls.size() < SpeakerBackground::maxAddresses)
            urls.insert(*url);
    }
    return urls;
}

/// Asks one interface's network for players and listens for two and a half seconds. Gives the description
/// addresses that the answers name, at most `SpeakerBackground::maxAddresses`.
QSet<QUrl> searchViaSSDP(SpeakerBackground& background, const InterfaceInfo& interface) {
    const auto socket = background.outside().network.openSearchSocket(interface.ip);
    if (!socket)
        return {};
    if (!sendSearch(background, *socket, interface)) {
        background.noteLocalNetworkDenial();
        return {};
    }
    auto urls = receiveAnswers(background, *socket);
    background.log(u"%1: %2 SSDP-Antworten"_qs.arg(interface.name, QString::number(urls.size())));
    return urls;
}

/// Asks each address from 1 to 254 around `ip` for a player's description. Takes up to twelve seconds.
QSet<QUrl> probeSubnet(const std::shared_ptr<SpeakerBackground>& background, const QString& ip) {
    const auto pieces = ip.split(u'.', Qt::SkipEmptyParts);
    if (pieces.size() != 4)
        return {};
    const QString prefix = pieces[0] + u'.' + pieces[1] + u'.' + pieces[2] + u'.';
    std::vector<HttpRequest> requests;
    for (int host = 1; host <= 254; ++host) {
        const auto url = usualDescriptionAddress(prefix + QString::number(host));
        if (!url.host().isEmpty())
            requests.push_back(descriptionRequest(url, probeTimeout));
    }
    QSet<QUrl> found;
    TextFetcher(background)
        .fetchTexts(requests, TextFetcher::Denial::ignored, [&](std::size_t index, const QString& text) {
            if (NetworkPlayerProtocol::speaker(text, requests[index].url))
                found.insert(requests[index].url);
        });
    return found;
}

/// What the searches of one run share.
struct Search {
    explicit Search(qsizetype count)
        : underWay(count) {}

    PlayerLocked<QSet<QUrl>> found;
    PlayerLocked<QList<InterfaceInfo>> silent;
    std::latch underWay;
};

std::shared_ptr<Search> searchEverywhere(const std::shared_ptr<SpeakerBackground>& background,
                                         const QList<InterfaceInfo>& interfaces) {
    auto search = std::make_shared<Search>(interfaces.size());
    for (const auto& interface : interfaces) {
        background->outside().tasks.async([background, interface, search] {
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

QList<QUrl> withKnownSpeakers(SpeakerBackground& background, const QSet<QUrl>& found) {
    // Those already known come first: they are read again even when others flood the search.
    QList<QUrl> addresses;
    const auto known = background.allSpeakers.value();
    for (const auto& speaker : known)
        addresses.append(speaker.deviceDescriptionURL());
    addresses.append(found.values());
    return addresses;
}

} // namespace

void runDiscovery(const std::shared_ptr<SpeakerBackground>& background, bool forceSubnetScan) {
    // It may have waited for a thread for longer than it is wanted.
    if (background->ended())
        return;
    const auto interfaces = activeIPv4Interfaces(background->outside().network.interfaceAddresses());
    background->searched.set(interfaces);
    const auto search = searchEverywhere(background, interfaces);
    auto found = search->found.value();
    background->log(u"SSDP-Beschreibungen: "_qs + quotedList(sortedAddresses(found)));
    const auto toScan = forceSubnetScan ? interfaces : search->silent.value();
    for (const auto& interface : toScan) {
        if (interface.broadcast)
            found.unite(probeSubnet(background, interface.ip));
    }
    const auto speakers = SpeakerLookup(background).discoverSpeakers(withKnownSpeakers(*background, found));
    if (background->ended())
        return;
    if (speakers.isEmpty()) {
        background->log(u"Keine erreichbaren Netzwerk-Player gefunden."_qs);
        return;
    }
    background->clearLocalNetworkDenial();
    background->applySpeakers(speakers);
}

} // namespace zofra
