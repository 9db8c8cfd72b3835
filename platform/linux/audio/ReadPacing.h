// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <algorithm>
#include <chrono>
#include <utility>

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
    [[nodiscard]] Clock::duration pauseBefore(Clock::time_point now) {
        const double missing = -std::min(m_allowance + regained(now), 0.0);
        const auto limit = std::chrono::duration_cast<Clock::duration>(Seconds(missing / bytesPerSecond));
        if (!std::exchange(m_isDrained, false))
            return limit;
        const auto inHand = m_sound - (now - m_soundSince);
        return std::max(limit, inHand < reserve ? Clock::duration(0) : rest);
    }
    /// A read that began at `began` brought `bytes`. All that was read so far sounds for `sound`.
    void hasRead(Clock::time_point began, Clock::time_point now, qsizetype bytes, Clock::duration sound) {
        m_allowance = std::min(m_allowance + regained(now), double{mostAtOnce}) - static_cast<double>(bytes);
        m_latestRead = now;
        if (m_sound == Clock::duration(0))
            m_soundSince = now;
        m_sound = sound;
        m_isDrained = now - began > waitedLongerThan;
    }

private:
    using Seconds = std::chrono::duration<double>;
    /// Four times 320 kbit/s.
    static constexpr double bytesPerSecond = 160'000;
    static constexpr qsizetype mostAtOnce = 524'288;
    /// With less in hand, each piece is fetched as it comes.
    static constexpr Clock::duration reserve = std::chrono::seconds(3);
    /// What is left of it covers what the network may do. A server that falls silent is noticed that much
    /// later.
    static constexpr Clock::duration rest = std::chrono::seconds(1);
    /// What is there already is handed over faster than this.
    static constexpr Clock::duration waitedLongerThan = std::chrono::milliseconds(5);

    [[nodiscard]] double regained(Clock::time_point now) const {
        return Seconds(now - m_latestRead).count() * bytesPerSecond;
    }

    Clock::time_point m_latestRead;
    /// Bytes that may be read now; below zero, the wait for them.
    double m_allowance = mostAtOnce;
    Clock::duration m_sound{0};
    Clock::time_point m_soundSince{};
    /// The latest read had to wait: nothing more was there.
    bool m_isDrained = false;
};

} // namespace zofra
