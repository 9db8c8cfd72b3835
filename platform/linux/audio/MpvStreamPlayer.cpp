// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/MpvStreamPlayer.h"

#include <algorithm>
#include <utility>

namespace zofra {

namespace {

/// A pause up to this long goes on where it was; after a longer one the listener wants what is on the air
/// now.
constexpr std::chrono::milliseconds longestHeldPause{3000};
/// A server may keep sending what never becomes sound, or too little of what does; no time-out of the network
/// notices that. A connection may be silent for this long in all; each moment of sound makes up for one of
/// silence.
constexpr ReconnectPacing::Milliseconds longestSilence{15000};

} // namespace

MpvStreamPlayer::MpvStreamPlayer(std::shared_ptr<AudioEngine> engine, std::shared_ptr<StreamItem> item)
    : m_engine(std::move(engine))
    , m_item(std::move(item)) {}

void MpvStreamPlayer::play() {
    m_state.want(EngineState::Sound::wanted);
    m_pauseTimer.reset();
    if (m_state.isOpen())
        m_core->setPaused(AudioCore::Pause::no);
    else
        openWhenAllowed();
    tellChanges();
}

void MpvStreamPlayer::pause() {
    m_state.want(EngineState::Sound::notWanted);
    stopWaiting();
    if (m_state.isOpen() && !m_pauseTimer) {
        m_core->setPaused(AudioCore::Pause::yes);
        m_pauseTimer =
            m_engine->mainQueue.startTimer(longestHeldPause, MainQueue::Repeat::once, [this] { close(); });
    }
    tellChanges();
}

void MpvStreamPlayer::setVolume(float volume) {
    m_volume = volume;
    if (m_core)
        m_core->setVolume(volume);
}

void MpvStreamPlayer::replaceCurrentItem(std::shared_ptr<StreamItem> item) {
    close();
    m_item = std::move(item);
    if (m_state.wanted() == EngineState::Sound::wanted)
        openWhenAllowed();
    tellChanges();
}

ObservationToken MpvStreamPlayer::observeTimeControlStatus(std::function<void(TimeControlStatus)> handler) {
    auto token = m_observers.add(handler);
    handler(m_status);
    return token;
}

void MpvStreamPlayer::openWhenAllowed() {
    if (!m_item || m_openTimer)
        return;
    const auto wait = m_engine->pacing.waitBefore(m_item->url);
    if (wait <= ReconnectPacing::Milliseconds(0)) {
        openNow();
        return;
    }
    m_openTimer = m_engine->mainQueue.startTimer(wait, MainQueue::Repeat::once, [this] { openNow(); });
    m_waitIsOver = m_engine->waitIsOver.add([this] { openNow(); });
}

void MpvStreamPlayer::openNow() {
    stopWaiting();
    if (!m_core)
        m_core = m_engine->takeCore();
    m_played = ReconnectPacing::Milliseconds(0);
    m_state.opening();
    m_core->setVolume(m_volume);
    m_core->setTitle(m_item->title);
    m_core->setPaused(AudioCore::Pause::no);
    m_core->load(m_item->url,
                 m_lifetime.guard([this](const std::vector<EngineEvent>& events) { take(events); }));
    m_silenceLeft = longestSilence;
    beginSilence();
}

void MpvStreamPlayer::close() {
    stopWaiting();
    m_pauseTimer.reset();
    m_silenceTimer.reset();
    if (m_state.isOpen())
        m_engine->pacing.closed(m_item->url, takePlayedTime());
    m_state.closed();
    if (m_core)
        m_engine->giveBack(std::move(m_core));
}

void MpvStreamPlayer::stopWaiting() {
    m_openTimer.reset();
    m_waitIsOver.reset();
}

void MpvStreamPlayer::take(const std::vector<EngineEvent>& events) {
    for (const auto& event : events)
        m_state.take(event);
    tellChanges();
}

void MpvStreamPlayer::tellChanges() {
    const auto outcome = m_state.conclude();
    // Any of those who are told may end this player.
    const auto lifetime = m_lifetime.token();
    const auto item = m_item;
    if (outcome.ended)
        connectionEnded(*outcome.ended);
    changeStatus(outcome.status);
    if (outcome.stalled && lifetime.isAlive())
        item->playbackStalled.notify();
    // Not to somebody who has just paused: a fault must never bring sound back.
    if (outcome.failed && lifetime.isAlive() && m_state.wanted() == EngineState::Sound::wanted)
        item->failedToPlayToEndTime.notify();
}

void MpvStreamPlayer::connectionEnded(EndCause cause) {
    if (cause == EndCause::noAudioDevice)
        m_engine->report(u"There is no audio device to play on"_qs);
    m_pauseTimer.reset();
    m_silenceTimer.reset();
    m_engine->pacing.failed(m_item->url, takePlayedTime());
    m_engine->giveBack(std::move(m_core));
}

void MpvStreamPlayer::changeStatus(TimeControlStatus status) {
    if (status == m_status)
        return;
    m_status = status;
    endSilence();
    if (status == TimeControlStatus::playing) {
        m_playingSince = m_engine->now();
        m_engine->worksAgain();
    } else if (m_playingSince) {
        const auto played = m_engine->now() - *std::exchange(m_playingSince, std::nullopt);
        m_played += played;
        m_silenceLeft = std::min(longestSilence, m_silenceLeft + played);
    }
    if (status == TimeControlStatus::waitingToPlayAtSpecifiedRate && m_state.isOpen())
        beginSilence();
    m_observers.notify(status);
}

void MpvStreamPlayer::beginSilence() {
    m_silentSince = m_engine->now();
    m_silenceTimer = m_engine->mainQueue.startTimer(m_silenceLeft, MainQueue::Repeat::once,
                                                    [this] { take({EngineEvent::ended(EndCause::stream)}); });
}

void MpvStreamPlayer::endSilence() {
    if (!m_silenceTimer)
        return;
    m_silenceTimer.reset();
    m_silenceLeft =
        std::max(m_silenceLeft - (m_engine->now() - m_silentSince), ReconnectPacing::Milliseconds(0));
}

ReconnectPacing::Milliseconds MpvStreamPlayer::takePlayedTime() {
    if (m_playingSince)
        m_played += m_engine->now() - *std::exchange(m_playingSince, std::nullopt);
    return std::exchange(m_played, ReconnectPacing::Milliseconds(0));
}

} // namespace zofra
