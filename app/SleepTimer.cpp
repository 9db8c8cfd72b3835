// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SleepTimer.h"

#include <utility>

namespace zofra {

SleepTimer::SleepTimer(MainQueue& mainQueue, Clock clock, std::function<void()> stop)
    : m_mainQueue(mainQueue)
    , m_clock(std::move(clock))
    , m_stop(std::move(stop)) {}

void SleepTimer::set(std::chrono::seconds time) {
    m_timer.reset();
    m_stopsAt.reset();
    if (time <= std::chrono::seconds(0))
        return;
    m_stopsAt = m_clock() + time;
    m_timer = m_mainQueue.startTimer(time, MainQueue::Repeat::once, [this] {
        m_stopsAt.reset();
        m_stop();
    });
}

} // namespace zofra
