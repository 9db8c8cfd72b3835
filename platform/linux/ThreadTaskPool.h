// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/TaskPool.h"

#include <chrono>
#include <cstddef>
#include <memory>

namespace zofra {

/// Background threads, made when needed and ended when idle. At most `maxThreads` tasks from outside run at
/// once, the others wait; a task submitted by a running task always gets a thread, so that it may be waited
/// for. Nobody ever waits for the pool itself: ending it drops what has not begun and leaves the rest to
/// finish.
class ThreadTaskPool final : public TaskPool {
public:
    struct Limits {
        std::size_t maxThreads = 64;
        std::chrono::milliseconds idleTime{2000};
    };
    ThreadTaskPool();
    explicit ThreadTaskPool(Limits limits);
    ~ThreadTaskPool() override;
    ThreadTaskPool(const ThreadTaskPool&) = delete;
    ThreadTaskPool& operator=(const ThreadTaskPool&) = delete;

    void async(std::function<void()> work) override;

    /// Threads there are now, idle ones included.
    [[nodiscard]] std::size_t threadCount() const;

private:
    class State;
    std::shared_ptr<State> m_state;
};

} // namespace zofra
