// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QUrl>

#include <chrono>
#include <functional>

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

    ReconnectPacing(SteadyClock clock, RandomFraction random);

    /// A connection to `address` could not be made, broke or ended after it had sounded for `played`. The
    /// first time it may be tried again at once, then after 0.25 s, doubling to 10 s, each a quarter more or
    /// less but never above 10 s.
    void failed(const QUrl& address, Milliseconds played);
    /// A connection was given up without a fault after it had sounded for `played`.
    void closed(const QUrl& address, Milliseconds played);
    /// How long `address` must be left alone from now on; zero when it may be opened.
    [[nodiscard]] Milliseconds waitBefore(const QUrl& address) const;
    /// Lets every address be opened at once: the network is another one, or the computer has woken.
    void tryNow();

private:
    struct Entry {
        int failures = 0;
        Milliseconds notBefore{0};
    };
    [[nodiscard]] Milliseconds delayAfter(int failures);

    SteadyClock m_clock;
    RandomFraction m_random;
    QHash<QUrl, Entry> m_entries;
};

} // namespace zofra
