// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/StreamPlayer.h"
#include "platform/linux/audio/AudioEngine.h"

#include <memory>
#include <optional>
#include <vector>

namespace zofra {

/// Plays one item on a core that it takes when there is something to open. Main thread only.
class MpvStreamPlayer final : public StreamPlayer {
public:
    MpvStreamPlayer(std::shared_ptr<AudioEngine> engine, std::shared_ptr<StreamItem> item);
    ~MpvStreamPlayer() override { close(); }

    void play() override;
    void pause() override;
    void setVolume(float volume) override;
    void replaceCurrentItem(std::shared_ptr<StreamItem> item) override;
    [[nodiscard]] TimeControlStatus timeControlStatus() const override { return m_status; }
    [[nodiscard]] ObservationToken
    observeTimeControlStatus(std::function<void(TimeControlStatus)> handler) override;

private:
    void openWhenAllowed();
    void openNow();
    void close();
    void stopWaiting();
    void take(const std::vector<EngineEvent>& events);
    void tellChanges();
    void connectionEnded(EndCause cause);
    void changeStatus(TimeControlStatus status);
    void beginSilence();
    void endSilence();
    [[nodiscard]] ReconnectPacing::Milliseconds takePlayedTime();

    std::shared_ptr<AudioEngine> m_engine;
    std::shared_ptr<StreamItem> m_item;
    std::unique_ptr<AudioCore> m_core;
    EngineState m_state;
    TimeControlStatus m_status = TimeControlStatus::paused;
    ObserverList<TimeControlStatus> m_observers;
    float m_volume = 1.0F;
    /// How long the connection has sounded so far, and since when it sounds now.
    ReconnectPacing::Milliseconds m_played{0};
    std::optional<ReconnectPacing::Milliseconds> m_playingSince;
    std::unique_ptr<Timer> m_openTimer;
    std::unique_ptr<Timer> m_pauseTimer;
    /// How long nothing may sound before the connection is given up, and since when nothing does.
    ReconnectPacing::Milliseconds m_silenceLeft{0};
    ReconnectPacing::Milliseconds m_silentSince{0};
    std::unique_ptr<Timer> m_silenceTimer;
    ObservationToken m_waitIsOver;
    Lifetime m_lifetime;
};

} // namespace zofra
