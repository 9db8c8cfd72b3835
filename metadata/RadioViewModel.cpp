// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/RadioViewModel.h"

#include "stations/texts/InterfaceTexts.h"

namespace zofra {

RadioViewModel::RadioViewModel(RadioStation station, HttpSession& session, Clock now,
                               MakeWebSocket makeWebSocket, const Environment& environment)
    : currentStation(*this, station)
    , currentSong(*this, texts::loading.in(environment.languages.currentLanguage()))
    , nextSong(*this, std::nullopt)
    , m_session(session)
    , m_makeWebSocket(std::move(makeWebSocket))
    , m_now(std::move(now))
    , m_environment(environment) {}

void RadioViewModel::setStation(RadioStation station) {
    if (station == currentStation)
        return;
    disconnectWebSocket();
    currentStation = station;
    m_isLoading = true;
    currentSong = texts::loading.in(m_environment.languages.currentLanguage());
    nextSong = std::nullopt;
    m_lastLiveTrack.reset();
    // Whatever is still under way belongs to the old station.
    m_lastAppliedMetadataRequest = m_metadataRequestCounter;
    auto start = m_lifetime.guard([this] {
        startWebSocket();
        startPolling();
        fetchMetadata();
    });
    tellUpdate(currentSong, std::nullopt);
    start();
}

void RadioViewModel::tellUpdate(const QString& current, const std::optional<QString>& next) const {
    if (!onUpdate)
        return;
    // Holds copies, because the listener may replace itself, set a station or end this model.
    const auto tell = [update = onUpdate, current, next] { update(current, next); };
    tell();
}

} // namespace zofra
