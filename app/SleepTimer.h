// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/MainQueue.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// Ends the music after a while. Main thread only.
class SleepTimer {
public:
    /// `mainQueue` outlives it. `stop` is called when the time has come.
    SleepTimer(MainQueue& mainQueue, Clock clock, std::function<void()> stop);

    /// From now on; instead of what was set before. Nothing takes it back.
    void set(std::chrono::seconds time);
    /// When it will stop; absent when it will not.
    [[nodiscard]] std::optional<TimePoint> stopsAt() const { return m_stopsAt; }

private:
    MainQueue& m_mainQueue;
    Clock m_clock;
    std::function<void()> m_stop;
    std::optional<TimePoint> m_stopsAt;
    std::unique_ptr<Timer> m_timer;
};

} // namespace zofra
