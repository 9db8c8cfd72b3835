// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/ReadPacing.h"

#include <algorithm>
#include <utility>

namespace zofra {

namespace {

using namespace std::chrono_literals;
using Clock = ReadPacing::Clock;
using Seconds = std::chrono::duration<double>;

/// Four times 320 kbit/s.
constexpr double bytesPerSecond = 160'000;
/// With less in hand, each piece is fetched as it comes.
constexpr Clock::duration reserve = 3s;
/// What is left of it covers what the network may do. A server that falls silent is noticed that much later.
constexpr Clock::duration rest = 1s;
/// What is there already is handed over faster than this.
constexpr Clock::duration waitedLongerThan = 5ms;

} // namespace

Clock::duration ReadPacing::pauseBefore(Clock::time_point now) {
    const double regained = Seconds(now - m_latestRead).count() * bytesPerSecond;
    const double missing = -std::min(m_allowance + regained, 0.0);
    const auto limit = std::chrono::duration_cast<Clock::duration>(Seconds(missing / bytesPerSecond));
    if (!std::exchange(m_isDrained, false))
        return limit;
    const auto inHand = m_sound - (now - m_soundSince);
    return std::max(limit, inHand < reserve ? Clock::duration(0) : rest);
}

void ReadPacing::hasRead(Clock::time_point began, Clock::time_point now, qsizetype bytes,
                         Clock::duration sound) {
    const double regained = Seconds(now - m_latestRead).count() * bytesPerSecond;
    m_allowance = std::min(m_allowance + regained, double{mostAtOnce}) - static_cast<double>(bytes);
    m_latestRead = now;
    if (m_sound == Clock::duration(0))
        m_soundSince = now;
    m_sound = sound;
    m_isDrained = now - began > waitedLongerThan;
}

} // namespace zofra
