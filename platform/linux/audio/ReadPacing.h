// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <chrono>

namespace zofra {

/// When a stream is read. Never faster than a few times the highest bit rate, whatever its sender does; and
/// where more is in hand than the next seconds need, in one go from time to time, because each read wakes a
/// thread. A plain value.
class ReadPacing {
public:
    using Clock = std::chrono::steady_clock;

    explicit ReadPacing(Clock::time_point now)
        : m_latestRead(now) {}

    /// How long the connection is to be left alone from `now` on.
    [[nodiscard]] Clock::duration pauseBefore(Clock::time_point now);
    /// A read that began at `began` brought `bytes`. All that was read so far sounds for `sound`.
    void hasRead(Clock::time_point began, Clock::time_point now, qsizetype bytes, Clock::duration sound);

private:
    static constexpr qsizetype mostAtOnce = 524'288;

    Clock::time_point m_latestRead;
    /// Bytes that may be read now; below zero, the wait for them.
    double m_allowance = mostAtOnce;
    Clock::duration m_sound{0};
    Clock::time_point m_soundSince{};
    /// The latest read had to wait: nothing more was there.
    bool m_isDrained = false;
};

} // namespace zofra
