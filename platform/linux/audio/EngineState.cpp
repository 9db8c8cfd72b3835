// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/EngineState.h"

#include <utility>

namespace zofra {

void EngineState::opening() {
    closed();
    m_open = true;
}

void EngineState::closed() {
    const auto sound = m_sound;
    *this = {};
    m_sound = sound;
}

void EngineState::take(const EngineEvent& event) {
    if (!m_open)
        return;
    switch (event.kind) {
    case EngineEvent::Kind::fileLoaded:
        m_loaded = true;
        break;
    case EngineEvent::Kind::playbackRestarted:
        m_restarted = true;
        break;
    case EngineEvent::Kind::coreIdle:
        m_coreIdle = event.value;
        break;
    case EngineEvent::Kind::pausedForCache:
        m_pausedForCache = event.value;
        break;
    case EngineEvent::Kind::ended:
        closed();
        m_ended = event.cause;
        break;
    }
}

EngineState::Outcome EngineState::conclude() {
    Outcome outcome;
    outcome.ended = std::exchange(m_ended, std::nullopt);
    outcome.failed = outcome.ended && m_sound == Sound::wanted;
    outcome.status = status();
    outcome.stalled = isNewStall(outcome.status);
    return outcome;
}

bool EngineState::isNewStall(TimeControlStatus status) {
    if (!m_pausedForCache)
        m_stallTold = false;
    if (!m_pausedForCache || m_stallTold)
        return false;
    if (status == TimeControlStatus::paused) {
        m_stallTold = true; // Nobody listens: not a stall, also not once somebody does.
        return false;
    }
    // Never together with "playing": whoever is told would wait for a "playing" that does not come any more.
    if (!m_restarted || status != TimeControlStatus::waitingToPlayAtSpecifiedRate)
        return false;
    m_stallTold = true;
    return true;
}

TimeControlStatus EngineState::status() const {
    if (m_sound == Sound::notWanted)
        return TimeControlStatus::paused;
    // `core-idle` may still be that of the stream before; only from the restart on does it speak of this one.
    if (m_loaded && m_restarted && !m_coreIdle)
        return TimeControlStatus::playing;
    return TimeControlStatus::waitingToPlayAtSpecifiedRate;
}

} // namespace zofra
