// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ThreadTaskPool.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace zofra {
namespace {

/// The pool whose thread this is.
thread_local const void* poolOfThisThread = nullptr;

} // namespace

/// Shared by the pool and its threads, so that either may end first.
class ThreadTaskPool::State final : public std::enable_shared_from_this<State> {
public:
    using Work = std::function<void()>;

    explicit State(Limits limits)
        : m_limits(limits) {}

    void submit(Work work) {
        const bool isNested = poolOfThisThread == this;
        std::unique_lock lock(m_mutex);
        auto& queue = isNested ? m_nested : m_outside;
        queue.push_back(std::move(work));
        if (m_idle >= runnable()) {
            m_wake.notify_one();
            return;
        }
        const bool mayStart = isNested || m_outsideRunning + m_outside.size() <= m_limits.maxThreads;
        if (!mayStart || startThread() || !isNested)
            return;
        // No thread to be had: whoever waits for this task is served by running it in place.
        work = std::move(queue.back());
        queue.pop_back();
        lock.unlock();
        work();
    }

    void end() {
        std::deque<Work> nested;
        std::deque<Work> outside;
        const std::scoped_lock lock(m_mutex);
        m_isEnding = true;
        nested.swap(m_nested);
        outside.swap(m_outside);
        m_wake.notify_all();
    }

    std::size_t threadCount() {
        const std::scoped_lock lock(m_mutex);
        return m_threads;
    }

private:
    /// With the mutex held.
    bool startThread() {
        try {
            std::thread([state = shared_from_this()] { state->run(); }).detach();
        } catch (const std::system_error&) {
            return false;
        }
        ++m_threads;
        return true;
    }

    /// Tasks that a free thread may take now.
    [[nodiscard]] std::size_t runnable() const {
        return m_nested.size() + std::min(m_outside.size(), m_limits.maxThreads - m_outsideRunning);
    }

    void run() {
        poolOfThisThread = this;
        std::unique_lock lock(m_mutex);
        while (waitForWork(lock)) {
            const bool isOutside = m_nested.empty();
            auto& queue = isOutside ? m_outside : m_nested;
            auto work = std::move(queue.front());
            queue.pop_front();
            m_outsideRunning += isOutside ? 1 : 0;
            lock.unlock();
            work();
            work = nullptr;
            lock.lock();
            m_outsideRunning -= isOutside ? 1 : 0;
        }
        --m_threads;
    }

    /// False when this thread has been idle for long enough, or the pool has ended.
    bool waitForWork(std::unique_lock<std::mutex>& lock) {
        if (runnable() > 0)
            return true;
        if (m_isEnding)
            return false;
        ++m_idle;
        m_wake.wait_for(lock, m_limits.idleTime, [this] { return m_isEnding || runnable() > 0; });
        --m_idle;
        return runnable() > 0;
    }

    const Limits m_limits;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Work> m_nested;
    std::deque<Work> m_outside;
    std::size_t m_threads = 0;
    std::size_t m_idle = 0;
    std::size_t m_outsideRunning = 0;
    bool m_isEnding = false;
};

ThreadTaskPool::ThreadTaskPool()
    : ThreadTaskPool(Limits()) {}

ThreadTaskPool::ThreadTaskPool(Limits limits)
    : m_state(std::make_shared<State>(limits)) {}

ThreadTaskPool::~ThreadTaskPool() {
    m_state->end();
}

void ThreadTaskPool::async(std::function<void()> work) {
    m_state->submit(std::move(work));
}

std::size_t ThreadTaskPool::threadCount() const {
    return m_state->threadCount();
}

} // namespace zofra
