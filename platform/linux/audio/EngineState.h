// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StreamPlayer.h"

#include <optional>
#include <utility>

namespace zofra {

/// Why a connection is over.
enum class EndCause {
    /// It could not be opened, broke, or ended; a live stream that ends has failed.
    stream,
    /// There is no audio device to play on.
    noAudioDevice,
    /// The engine itself cannot be used.
    engine,
};

/// One thing that happened to the connection that is open. Ends that were asked for are not among them.
struct EngineEvent {
    enum class Kind { fileLoaded, playbackRestarted, coreIdle, pausedForCache, ended };

    static EngineEvent fileLoaded() { return {Kind::fileLoaded, false, EndCause::stream}; }
    /// The first samples are on their way to the device.
    static EngineEvent playbackRestarted() { return {Kind::playbackRestarted, false, EndCause::stream}; }
    static EngineEvent coreIdle(bool value) { return {Kind::coreIdle, value, EndCause::stream}; }
    static EngineEvent pausedForCache(bool value) { return {Kind::pausedForCache, value, EndCause::stream}; }
    static EngineEvent ended(EndCause cause) { return {Kind::ended, false, cause}; }

    Kind kind;
    bool value;
    EndCause cause;
};

/// Makes a player's status out of what the listener wants and what the engine tells. The engine tells related
/// things one after the other in no useful order, so events are only taken in, and conclusions are drawn
/// once, by `conclude`, when there are no more. A plain value.
class EngineState {
public:
    enum class Sound { wanted, notWanted };
    void want(Sound sound) { m_sound = sound; }
    [[nodiscard]] Sound wanted() const { return m_sound; }

    /// A connection is being made.
    void opening() {
        closed();
        m_open = true;
    }
    /// The connection was given up on purpose.
    void closed() {
        const auto sound = m_sound;
        *this = {};
        m_sound = sound;
    }
    [[nodiscard]] bool isOpen() const { return m_open; }

    void take(const EngineEvent& event) {
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

    struct Outcome {
        TimeControlStatus status = TimeControlStatus::paused;
        /// The data ran dry just now, while sound was wanted.
        bool stalled = false;
        /// The connection is over just now, wanted or not.
        std::optional<EndCause> ended;
        /// It is over and sound was wanted.
        bool failed = false;
    };
    /// Draws the conclusions from what was taken since the last call.
    [[nodiscard]] Outcome conclude() {
        Outcome outcome;
        outcome.ended = std::exchange(m_ended, std::nullopt);
        outcome.failed = outcome.ended && m_sound == Sound::wanted;
        outcome.status = status();
        outcome.stalled = isNewStall(outcome.status);
        return outcome;
    }

private:
    [[nodiscard]] TimeControlStatus status() const {
        if (m_sound == Sound::notWanted)
            return TimeControlStatus::paused;
        // Only from the restart on does `core-idle` speak of this stream; before, it may be of the last one.
        if (m_loaded && m_restarted && !m_coreIdle)
            return TimeControlStatus::playing;
        return TimeControlStatus::waitingToPlayAtSpecifiedRate;
    }
    [[nodiscard]] bool isNewStall(TimeControlStatus status) {
        if (!m_pausedForCache)
            m_stallTold = false;
        if (!m_pausedForCache || m_stallTold)
            return false;
        if (status == TimeControlStatus::paused) {
            m_stallTold = true; // Nobody listens: not a stall, also not once somebody does.
            return false;
        }
        // Never together with "playing": whoever is told would wait for another one, which does not come.
        if (!m_restarted || status != TimeControlStatus::waitingToPlayAtSpecifiedRate)
            return false;
        m_stallTold = true;
        return true;
    }

    Sound m_sound = Sound::notWanted;
    bool m_open = false;
    bool m_loaded = false;
    bool m_restarted = false;
    bool m_coreIdle = true;
    bool m_pausedForCache = false;
    bool m_stallTold = false;
    std::optional<EndCause> m_ended;
};

} // namespace zofra
