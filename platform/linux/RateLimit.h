// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <chrono>

namespace zofra {

/// A token bucket: so much at once, so much a second in the long run. A plain value.
class RateLimit {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    struct Rate {
        double perSecond = 0;
        double atOnce = 0;
    };

    explicit RateLimit(const Rate& rate)
        : m_rate(rate)
        , m_left(rate.atOnce) {}

    /// Whether anything may be spent at `now`, which never goes back.
    [[nodiscard]] bool hasRoom(TimePoint now) {
        m_left = std::min(m_rate.atOnce,
                          m_left + m_rate.perSecond * std::chrono::duration<double>(now - m_at).count());
        m_at = now;
        return m_left > 0;
    }
    /// Takes one; false when there is none left.
    [[nodiscard]] bool take(TimePoint now) {
        const bool isThere = hasRoom(now);
        m_left -= isThere ? 1 : 0;
        return isThere;
    }
    /// May take more than there is; it is owed then.
    void spend(double amount) { m_left -= amount; }
    /// Whether nothing is owed and all may be spent at once.
    [[nodiscard]] bool isFull(TimePoint now) { return hasRoom(now) && m_left >= m_rate.atOnce; }
    /// When there is room again, after `hasRoom` said no; a little later than the first moment, so that
    /// nobody wakes for next to nothing.
    [[nodiscard]] TimePoint nextRoom() const {
        const auto wait = std::chrono::duration<double>(-m_left / m_rate.perSecond);
        return m_at + std::chrono::ceil<std::chrono::milliseconds>(wait) + std::chrono::milliseconds(20);
    }

private:
    Rate m_rate;
    double m_left;
    TimePoint m_at{};
};

} // namespace zofra
