// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SpeakerBackground.h"

#include "speakers/SpeakerGrouping.h"

#include <algorithm>

namespace zofra {

void SpeakerBackground::post(std::function<void()> work) {
    if (ended())
        return;
    m_outside.mainQueue.async([weak = weak_from_this(), work = std::move(work)] {
        const auto self = weak.lock();
        if (self && !self->ended())
            work();
    });
}

void SpeakerBackground::log(const QString& message) {
    if (!ended())
        m_outside.systemLog.log(u"[Sonos] "_qs + message);
}

void SpeakerBackground::noteIfDenied(const std::optional<HttpError>& error, const QUrl& target) {
    if (!isLocalNetworkDenial(error))
        return;
    const auto interfaces = searched.value();
    if (std::ranges::any_of(
            interfaces, [host = target.host()](const auto& interface) { return interface.reaches(host); }))
        noteLocalNetworkDenial();
}

void SpeakerBackground::applySpeakers(const QList<SonosSpeaker>& speakers) {
    allSpeakers.set(speakers);
    post([this, rooms = NetworkPlayerProtocol::rooms(speakers)] { m_reports.rooms(rooms); });
}

bool isLocalNetworkDenial(const std::optional<HttpError>& error) {
    if (!error)
        return false;
    return error->code == HttpError::Code::notConnected ||
           error->localizedDescription.contains(u"Local network prohibited");
}

} // namespace zofra
