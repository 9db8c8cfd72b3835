// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/linux/audio/AudioCore.h"
#include "platform/linux/audio/MpvHandle.h"

#include <cstdint>
#include <optional>

namespace zofra {

/// One mpv, used for one connection after the other: starting an mpv costs more than opening a stream. It is
/// made when the first address is loaded, and made anew when it hangs, which happens when the system looks up
/// a name in vain and cannot be interrupted. Main thread only.
class MpvCore final : public AudioCore {
public:
    /// Told, on one line, why there is no mpv.
    using Report = std::function<void(const QString& reason)>;

    MpvCore(MainQueue& mainQueue, MpvHandle::Recipe recipe, Report report);

    void load(const QUrl& url, EventHandler handler) override;
    void stop() override;
    void setPaused(Pause pause) override;
    void setVolume(float volume) override;
    void setTitle(const QString& title) override;

private:
    /// Has mpv told what differs when this turn of the main queue is over: each command costs mpv an answer,
    /// and it holds only so many.
    void applySoon();
    void prepareStream();
    void apply();
    void makeHandle();
    void handleReady(const Result<std::shared_ptr<MpvHandle>>& handle);
    void startLoading();
    void replaceHungHandle();
    void drain();
    void take(const mpv_event& event, std::vector<EngineEvent>& events);
    void takeReply(const mpv_event& event, std::vector<EngineEvent>& events);
    void takeStart(std::int64_t entry, std::vector<EngineEvent>& events);
    void takeEnd(const mpv_event_end_file& end, std::vector<EngineEvent>& events);
    void takeProperty(const mpv_event& event, std::vector<EngineEvent>& events);
    void deliver(const std::vector<EngineEvent>& events);
    [[nodiscard]] bool isOurs() const { return m_entry && m_entry == m_startedEntry; }

    MainQueue& m_mainQueue;
    MpvHandle::Recipe m_recipe;
    Report m_report;
    std::shared_ptr<MpvHandle> m_handle;
    bool m_making = false;

    QUrl m_url;
    EventHandler m_handler;
    Pause m_pause = Pause::no;
    float m_volume = 1.0F;
    QString m_title;
    /// What mpv has been told.
    std::optional<Pause> m_givenPause;
    std::optional<float> m_givenVolume;
    QString m_givenTitle;
    bool m_isApplyPosted = false;
    bool m_isPrepareDue = false;
    bool m_isLoadDue = false;
    /// It was asked to load something since it was last told to stop.
    bool m_isBusy = false;

    /// Of the latest load or stop, whether or not mpv had to be told.
    std::uint64_t m_lastCommand = 0;
    /// mpv's number of the connection that was asked for, and of the one it is busy with.
    std::optional<std::int64_t> m_entry;
    std::optional<std::int64_t> m_startedEntry;
    bool m_coreIdle = true;
    bool m_pausedForCache = false;
    std::unique_ptr<Timer> m_startTimer;
    int m_startChecks = 0;
    Lifetime m_lifetime;
};

} // namespace zofra
