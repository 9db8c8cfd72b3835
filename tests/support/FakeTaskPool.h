// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/TaskPool.h"

#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace zofra::test {

/// A pool that runs tasks where the test wants them.
class FakeTaskPool final : public TaskPool {
public:
    enum class Mode {
        /// On the caller's thread, before `async` returns.
        inPlace,
        /// On the test's thread, in `runAll`.
        onDemand,
        /// The same, but what a running task submits runs in place, so that it may be waited for.
        onDemandThenInPlace,
        /// Each on a thread of its own; the pool's end waits for them.
        threads,
    };
    explicit FakeTaskPool(Mode mode)
        : m_mode(mode) {}
    FakeTaskPool(const FakeTaskPool&) = delete;
    FakeTaskPool& operator=(const FakeTaskPool&) = delete;
    ~FakeTaskPool() override { join(); }

    void async(std::function<void()> work) override {
        if (m_mode == Mode::inPlace || m_isRunning) {
            work();
            return;
        }
        const std::scoped_lock lock(m_mutex);
        if (m_mode == Mode::threads)
            m_threads.emplace_back(std::move(work));
        else
            m_waiting.push_back(std::move(work));
    }

    /// Runs what waits, also what comes meanwhile.
    void runAll() {
        while (true) {
            std::function<void()> work;
            {
                const std::scoped_lock lock(m_mutex);
                if (m_waiting.empty())
                    return;
                work = std::move(m_waiting.front());
                m_waiting.pop_front();
            }
            m_isRunning = m_mode == Mode::onDemandThenInPlace;
            work();
            m_isRunning = false;
        }
    }
    [[nodiscard]] std::size_t waiting() const {
        const std::scoped_lock lock(m_mutex);
        return m_waiting.size();
    }
    /// Waits for every thread, also for those that come meanwhile.
    void join() {
        while (true) {
            std::vector<std::thread> threads;
            {
                const std::scoped_lock lock(m_mutex);
                threads.swap(m_threads);
            }
            if (threads.empty())
                return;
            for (auto& thread : threads)
                thread.join();
        }
    }

private:
    Mode m_mode;
    /// Set by the test's thread only, in modes that know no other.
    bool m_isRunning = false;
    mutable std::mutex m_mutex;
    std::deque<std::function<void()>> m_waiting;
    std::vector<std::thread> m_threads;
};

} // namespace zofra::test
