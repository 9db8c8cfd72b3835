// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QUrl>

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

namespace zofra {

/// When a stream address may be opened again after it has failed, so that a dead host makes no hot loop and
/// many listeners do not all come back in the same second. A plain value; used by one thread at a time.
class ReconnectPacing {
public:
    using Milliseconds = std::chrono::milliseconds;
    /// Time since some fixed moment; never goes back.
    using SteadyClock = std::function<Milliseconds()>;
    /// Evenly spread over 0 up to 1.
    using RandomFraction = std::function<double()>;

    ReconnectPacing(SteadyClock clock, RandomFraction random)
        : m_clock(std::move(clock))
        , m_random(std::move(random)) {}

    /// A connection to `address` could not be made, broke or ended after it had sounded for `played`. The
    /// first time it may be tried again at once, then after 0.25 s, doubling to 10 s, each a quarter more or
    /// less but never above 10 s.
    void failed(const QUrl& address, Milliseconds played) {
        closed(address, played);
        if (!m_entries.contains(address) && m_entries.size() >= mostAddresses)
            m_entries.erase(
                std::min_element(m_entries.cbegin(), m_entries.cend(),
                                 [](const Entry& a, const Entry& b) { return a.notBefore < b.notBefore; }));
        auto& entry = m_entries[address];
        ++entry.failures;
        entry.notBefore = m_clock() + delayAfter(entry.failures);
    }
    /// A connection was given up without a fault after it had sounded for `played`.
    void closed(const QUrl& address, Milliseconds played) {
        if (played >= provenAfter)
            m_entries.remove(address);
    }
    /// How long `address` must be left alone from now on; zero when it may be opened.
    [[nodiscard]] Milliseconds waitBefore(const QUrl& address) const {
        const auto entry = m_entries.constFind(address);
        if (entry == m_entries.constEnd())
            return Milliseconds(0);
        return std::clamp(entry->notBefore - m_clock(), Milliseconds(0), longestDelay);
    }
    /// Lets every address be opened at once: the network is another one, or the computer has woken.
    void tryNow() {
        const auto now = m_clock();
        for (auto& entry : m_entries)
            entry.notBefore = std::min(entry.notBefore, now);
    }

private:
    static constexpr Milliseconds firstDelay{250};
    static constexpr Milliseconds longestDelay{10'000};
    static constexpr double spread = 0.25;
    /// A stream that has sounded this long was a good one: what comes next is a first failure.
    static constexpr Milliseconds provenAfter{30'000};
    /// Far above the number of stations; only a bound.
    static constexpr qsizetype mostAddresses = 64;

    struct Entry {
        int failures = 0;
        Milliseconds notBefore{0};
    };
    [[nodiscard]] Milliseconds delayAfter(int failures) {
        if (failures <= 1)
            return Milliseconds(0);
        // Doubled six times it is longer than the longest.
        const auto delay = std::min(firstDelay * (1 << std::min(failures - 2, 6)), longestDelay);
        const double factor = 1.0 + spread * (2.0 * std::clamp(m_random(), 0.0, 1.0) - 1.0);
        const Milliseconds spreadDelay(
            static_cast<Milliseconds::rep>(static_cast<double>(delay.count()) * factor));
        // What would be longer than the longest is folded back rather than cut, so that it stays spread.
        return spreadDelay > longestDelay ? 2 * longestDelay - spreadDelay : spreadDelay;
    }

    SteadyClock m_clock;
    RandomFraction m_random;
    QHash<QUrl, Entry> m_entries;
};

} // namespace zofra
