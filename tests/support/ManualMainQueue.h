// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Clock.h"
#include "platform/MainQueue.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace zofra::test {

/// A main queue and clock that move only when the test says so. `async` and `asyncAfter` may be called from
/// any thread, everything else from the test's.
class ManualMainQueue final : public MainQueue {
public:
    void async(Work work) override {
        const std::scoped_lock lock(m_mutex);
        m_posted.push_back(std::move(work));
    }

    void asyncAfter(std::chrono::milliseconds delay, Work work) override {
        const std::scoped_lock lock(m_mutex);
        m_delayed.push_back(
            {m_elapsed + delay, m_nextOrder++, std::make_shared<Entry>(Entry{std::move(work), {}})});
    }

    std::unique_ptr<Timer> startTimer(std::chrono::milliseconds interval, Repeat repeat,
                                      Work handler) override {
        auto entry = std::make_shared<Entry>(Entry{std::move(handler), {}});
        if (repeat == Repeat::forever)
            entry->interval = interval;
        const std::scoped_lock lock(m_mutex);
        m_delayed.push_back({m_elapsed + interval, m_nextOrder++, entry});
        m_startedTimers.push_back(interval);
        m_timerEntries.push_back(entry);
        return std::make_unique<ManualTimer>(std::move(entry));
    }

    /// Runs everything posted, also what is posted meanwhile (10 000 pieces at most).
    void drain() {
        for (int i = 0; i < 10000; ++i) {
            Work work;
            {
                const std::scoped_lock lock(m_mutex);
                if (m_posted.empty())
                    return;
                work = std::move(m_posted.front());
                m_posted.pop_front();
            }
            work();
        }
    }

    /// Drains, then moves time on, running what falls due in its order and draining after each.
    void advance(std::chrono::milliseconds duration) {
        drain();
        const auto end = m_elapsed + duration;
        while (true) {
            std::shared_ptr<Entry> due;
            {
                const std::scoped_lock lock(m_mutex);
                const auto next = std::min_element(m_delayed.begin(), m_delayed.end());
                if (next == m_delayed.end() || next->at > end)
                    break;
                m_elapsed = std::max(m_elapsed, next->at);
                due = next->entry;
                if (due->interval.count() > 0 && !due->cancelled) {
                    next->at += due->interval;
                    next->order = m_nextOrder++;
                } else {
                    m_delayed.erase(next);
                }
            }
            if (due->cancelled)
                continue;
            due->work();
            drain();
        }
        m_elapsed = end;
        drain();
    }

    /// How far `advance` has moved time.
    [[nodiscard]] std::chrono::milliseconds elapsed() const { return m_elapsed; }
    /// A clock that starts at `start` and moves with `advance`. The queue must outlive it.
    [[nodiscard]] Clock clock(TimePoint start = TimePoint(std::chrono::seconds(1'700'000'000))) {
        return [this, start] { return start + m_elapsed; };
    }
    /// Intervals of every timer started so far, in order.
    [[nodiscard]] const std::vector<std::chrono::milliseconds>& startedTimers() const {
        return m_startedTimers;
    }
    /// Number of timers that would still fire.
    [[nodiscard]] std::size_t pendingTimers() const {
        const std::scoped_lock lock(m_mutex);
        return static_cast<std::size_t>(
            std::count_if(m_delayed.begin(), m_delayed.end(), [this](const Delayed& d) {
                return !d.entry->cancelled && std::find(m_timerEntries.begin(), m_timerEntries.end(),
                                                        d.entry) != m_timerEntries.end();
            }));
    }
    [[nodiscard]] std::size_t pendingWork() const {
        const std::scoped_lock lock(m_mutex);
        return m_posted.size();
    }

private:
    struct Entry {
        Work work;
        std::chrono::milliseconds interval;
        bool cancelled = false;
    };
    struct Delayed {
        std::chrono::milliseconds at;
        std::uint64_t order;
        std::shared_ptr<Entry> entry;
        friend bool operator<(const Delayed& a, const Delayed& b) {
            return a.at != b.at ? a.at < b.at : a.order < b.order;
        }
    };
    class ManualTimer final : public Timer {
    public:
        explicit ManualTimer(std::shared_ptr<Entry> entry)
            : m_entry(std::move(entry)) {}
        ManualTimer(const ManualTimer&) = delete;
        ManualTimer& operator=(const ManualTimer&) = delete;
        ~ManualTimer() override { m_entry->cancelled = true; }

    private:
        std::shared_ptr<Entry> m_entry;
    };

    mutable std::mutex m_mutex;
    std::deque<Work> m_posted;
    std::vector<Delayed> m_delayed;
    std::vector<std::chrono::milliseconds> m_startedTimers;
    std::vector<std::shared_ptr<Entry>> m_timerEntries;
    std::chrono::milliseconds m_elapsed{0};
    std::uint64_t m_nextOrder = 0;
};

} // namespace zofra::test
