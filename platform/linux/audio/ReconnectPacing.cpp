// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/ReconnectPacing.h"

#include <algorithm>
#include <utility>

namespace zofra {

namespace {

using Milliseconds = ReconnectPacing::Milliseconds;

constexpr Milliseconds firstDelay{250};
constexpr Milliseconds longestDelay{10'000};
constexpr double spread = 0.25;
/// A stream that has sounded this long was a good one: what comes next is a first failure.
constexpr Milliseconds provenAfter{30'000};
/// Far above the number of stations; only a bound.
constexpr qsizetype mostAddresses = 64;

} // namespace

ReconnectPacing::ReconnectPacing(SteadyClock clock, RandomFraction random)
    : m_clock(std::move(clock))
    , m_random(std::move(random)) {}

void ReconnectPacing::failed(const QUrl& address, Milliseconds played) {
    closed(address, played);
    if (!m_entries.contains(address) && m_entries.size() >= mostAddresses)
        m_entries.erase(
            std::min_element(m_entries.cbegin(), m_entries.cend(),
                             [](const Entry& a, const Entry& b) { return a.notBefore < b.notBefore; }));
    auto& entry = m_entries[address];
    ++entry.failures;
    entry.notBefore = m_clock() + delayAfter(entry.failures);
}

void ReconnectPacing::closed(const QUrl& address, Milliseconds played) {
    if (played >= provenAfter)
        m_entries.remove(address);
}

Milliseconds ReconnectPacing::waitBefore(const QUrl& address) const {
    const auto entry = m_entries.constFind(address);
    if (entry == m_entries.constEnd())
        return Milliseconds(0);
    return std::clamp(entry->notBefore - m_clock(), Milliseconds(0), longestDelay);
}

void ReconnectPacing::tryNow() {
    const auto now = m_clock();
    for (auto& entry : m_entries)
        entry.notBefore = std::min(entry.notBefore, now);
}

Milliseconds ReconnectPacing::delayAfter(int failures) {
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

} // namespace zofra
