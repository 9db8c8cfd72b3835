// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SsdpSearch.h"

#include "speakers/SsdpAnswer.h"

#include <cerrno>
#include <chrono>
#include <cstdint>

namespace zofra {

namespace {

constexpr std::uint16_t ssdpPort = 1900;
constexpr std::chrono::milliseconds receiveWindow{2500};

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
    attempt(QStringLiteral("239.255.255.250"));
    if (interface.broadcast)
        attempt(*interface.broadcast);
    // Put together piece by piece: an interface's name may hold anything, placeholders included.
    background.log(interface.name + QStringLiteral(": ") + QString::number(attempts) +
                   QStringLiteral(" Sendeversuche, ") + QString::number(blocked) +
                   QStringLiteral(" davon blockiert (letzter errno ") + QString::number(lastErrno) + u')');
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

} // namespace

QSet<QUrl> searchViaSSDP(SpeakerBackground& background, const InterfaceInfo& interface) {
    const auto socket = background.outside().network.openSearchSocket(interface.ip);
    if (!socket)
        return {};
    if (!sendSearch(background, *socket, interface)) {
        background.noteLocalNetworkDenial();
        return {};
    }
    auto urls = receiveAnswers(background, *socket);
    background.log(interface.name + QStringLiteral(": ") + QString::number(urls.size()) +
                   QStringLiteral(" SSDP-Antworten"));
    return urls;
}

} // namespace zofra
