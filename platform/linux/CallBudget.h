// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/RateLimit.h"

#include <chrono>

namespace zofra::dbus {

/// How much a caller on the bus may ask for: calls in one turn of the event loop, calls in the long run, and
/// time of the thread that answers. A plain value.
class CallBudget {
public:
    struct Limits {
        int callsInTurn = 0;
        RateLimit::Rate calls;
        /// Seconds.
        RateLimit::Rate time;
    };

    explicit CallBudget(const Limits& limits)
        : m_mostInTurn(limits.callsInTurn)
        , m_calls(limits.calls)
        , m_time(limits.time) {}

    /// Takes one call; false when there is none left.
    [[nodiscard]] bool take(RateLimit::TimePoint now) {
        if (++m_inTurn > m_mostInTurn || !m_calls.hasRoom(now) || !m_time.hasRoom(now))
            return false;
        m_calls.spend(1);
        return true;
    }
    /// What answering it took.
    void spend(std::chrono::duration<double> time) { m_time.spend(time.count()); }
    void endTurn() { m_inTurn = 0; }
    /// Whether it is as good as new.
    [[nodiscard]] bool isUnused(RateLimit::TimePoint now) {
        return m_calls.isFull(now) && m_time.isFull(now);
    }

private:
    int m_mostInTurn;
    int m_inTurn = 0;
    RateLimit m_calls;
    RateLimit m_time;
};

} // namespace zofra::dbus
