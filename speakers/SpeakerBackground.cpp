// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SpeakerBackground.h"

#include "speakers/NetworkPlayerProtocol.h"

#include <utility>

namespace zofra {

SpeakerBackground::SpeakerBackground(const Outside& outside, Reports reports)
    : m_outside(outside)
    , m_reports(std::move(reports)) {}

void SpeakerBackground::end() {
    m_waitPoint->end();
    m_waitPoint->waitForSure([this] { return m_uses == 0; });
}

template<typename Use>
void SpeakerBackground::use(Use use) {
    if (!m_waitPoint->wait([] { return true; }, [this] { ++m_uses; }))
        return;
    const auto leave = finally([this] { m_waitPoint->change([this] { --m_uses; }); });
    use(m_outside);
}

void SpeakerBackground::start(HttpRequest request, HttpSession::Completion completion) {
    use([&](const Outside& outside) { outside.session.start(std::move(request), std::move(completion)); });
}

void SpeakerBackground::post(std::function<void()> work) {
    use([&](const Outside& outside) {
        outside.mainQueue.async([weak = weak_from_this(), work = std::move(work)] {
            const auto self = weak.lock();
            if (self && !self->ended())
                work();
        });
    });
}

void SpeakerBackground::async(std::function<void()> work) {
    use([&](const Outside& outside) { outside.tasks.async(std::move(work)); });
}

void SpeakerBackground::log(const QString& message) {
    use([&](const Outside& outside) { outside.systemLog.log(QStringLiteral("[Sonos] ") + message); });
}

std::vector<InterfaceAddress> SpeakerBackground::interfaceAddresses() {
    std::vector<InterfaceAddress> addresses;
    use([&](const Outside& outside) { addresses = outside.network.interfaceAddresses(); });
    return addresses;
}

std::unique_ptr<UdpSearchSocket> SpeakerBackground::openSearchSocket(const QString& ip) {
    std::unique_ptr<UdpSearchSocket> socket;
    use([&](const Outside& outside) { socket = outside.network.openSearchSocket(ip); });
    return socket;
}

void SpeakerBackground::noteLocalNetworkDenial() {
    post([this] { m_reports.localNetwork(true); });
}

void SpeakerBackground::clearLocalNetworkDenial() {
    post([this] { m_reports.localNetwork(false); });
}

void SpeakerBackground::applySpeakers(const QList<SonosSpeaker>& speakers) {
    allSpeakers.set(speakers);
    post([this, rooms = NetworkPlayerProtocol::rooms(speakers)] { m_reports.rooms(rooms); });
}

void SpeakerBackground::noteRunEnded() {
    post([this] { m_reports.runEnded(); });
}

bool isLocalNetworkDenial(const std::optional<HttpError>& error) {
    if (!error)
        return false;
    return error->code == HttpError::Code::notConnected ||
           error->localizedDescription.contains(QLatin1String("Local network prohibited"));
}

} // namespace zofra
