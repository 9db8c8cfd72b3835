// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <utility>

namespace zofra {

/// The one place where background work of a manager waits, so that the end of the manager ends every wait at
/// once. Callable from any thread.
class WaitPoint {
public:
    /// Ends every wait, now and later.
    void end() {
        change([this] { m_ended = true; });
    }
    [[nodiscard]] bool ended() const {
        const std::scoped_lock lock(m_mutex);
        return m_ended;
    }

    /// Changes under the lock what somebody may be waiting for.
    template<typename Change>
    void change(Change change) {
        {
            const std::scoped_lock lock(m_mutex);
            change();
        }
        m_wake.notify_all();
    }

    /// Waits, also beyond the end, until `condition` (looked at under the lock) holds.
    template<typename Condition>
    void waitForSure(Condition condition) {
        std::unique_lock lock(m_mutex);
        m_wake.wait(lock, condition);
    }
    /// Waits until `condition` holds, then runs `change` under the same lock. False, and nothing run, when
    /// the end comes first.
    template<typename Condition, typename Change>
    bool wait(Condition condition, Change change) {
        std::unique_lock lock(m_mutex);
        m_wake.wait(lock, [&] { return m_ended || condition(); });
        if (m_ended)
            return false;
        change();
        return true;
    }
    /// The same, but no longer than to `deadline`; `change` runs then, too.
    template<typename Condition, typename Change>
    bool waitUntil(std::chrono::steady_clock::time_point deadline, Condition condition, Change change) {
        std::unique_lock lock(m_mutex);
        m_wake.wait_until(lock, deadline, [&] { return m_ended || condition(); });
        if (m_ended)
            return false;
        change();
        return true;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_ended = false;
};

/// A counting semaphore. Callable from any thread.
class CountingSemaphore {
public:
    CountingSemaphore(std::shared_ptr<WaitPoint> waitPoint, std::ptrdiff_t value)
        : m_waitPoint(std::move(waitPoint))
        , m_value(value) {}

    /// Takes one, waiting for it; false when the end comes first.
    [[nodiscard]] bool wait() {
        return m_waitPoint->wait([this] { return m_value > 0; }, [this] { --m_value; });
    }
    void signal() {
        m_waitPoint->change([this] { ++m_value; });
    }

private:
    std::shared_ptr<WaitPoint> m_waitPoint;
    std::ptrdiff_t m_value;
};

/// A number of tasks to wait for. Callable from any thread.
class DispatchGroup {
public:
    explicit DispatchGroup(std::shared_ptr<WaitPoint> waitPoint)
        : m_waitPoint(std::move(waitPoint)) {}

    void enter() {
        m_waitPoint->change([this] { ++m_entered; });
    }
    void leave() {
        m_waitPoint->change([this] { --m_entered; });
    }
    /// Waits until everyone has left; false when the end comes first.
    [[nodiscard]] bool wait() {
        return m_waitPoint->wait([this] { return m_entered == 0; }, [] {});
    }

private:
    std::shared_ptr<WaitPoint> m_waitPoint;
    std::ptrdiff_t m_entered = 0;
};

/// Runs something once: when told to, or else when the last owner lets go. What a request's completion holds,
/// so that a session that ends without completing leaves nobody waiting.
template<typename Work>
class Finally {
public:
    explicit Finally(Work work)
        : m_work(std::move(work)) {}
    Finally(const Finally&) = delete;
    Finally& operator=(const Finally&) = delete;
    ~Finally() { run(); }

    /// One thread at a time.
    void run() {
        if (!std::exchange(m_done, true))
            m_work();
    }

private:
    Work m_work;
    bool m_done = false;
};

template<typename Work>
[[nodiscard]] std::shared_ptr<Finally<Work>> finally(Work work) {
    return std::make_shared<Finally<Work>>(std::move(work));
}

} // namespace zofra
