// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/RateLimit.h"

#include <QByteArray>

namespace zofra {

/// How many lines one way out takes: a burst, then so many a second, whatever a peer does to cause them.
/// Counts those left out, for whatever reason. One thread at a time.
class LineLimit {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr double atOnce = 500;
    static constexpr double perSecond = 20;

    /// Whether one more line may go out at `now`; counted as left out when not.
    [[nodiscard]] bool takes(Clock::time_point now) {
        const bool isTaken = m_limit.take(now);
        m_leftOut += isTaken ? 0 : 1;
        return isTaken;
    }
    void leaveOut() { ++m_leftOut; }
    /// What to say in the place of the lines left out since the last `told`; empty when there are none.
    [[nodiscard]] QByteArray note() const {
        return m_leftOut == 0 ? QByteArray()
                              : "(" + QByteArray::number(m_leftOut) +
                                    " lines were left out: too many at once, or nobody was reading)";
    }
    void told() { m_leftOut = 0; }

private:
    RateLimit m_limit{{perSecond, atOnce}};
    qint64 m_leftOut = 0;
};

} // namespace zofra
