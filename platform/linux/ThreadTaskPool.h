// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/TaskPool.h"
#include "platform/linux/DetachedThread.h"

#include <chrono>
#include <functional>
#include <utility>

namespace zofra {

/// A background thread for each task: those that wait for others never take a thread away from them. A task
/// for which the system has no thread to give waits, and is tried again every second. Nobody ever waits for
/// the threads; they end with their task.
class ThreadTaskPool final : public TaskPool {
public:
    using Work = std::function<void()>;
    /// Runs `work` on a thread of its own; false when there is none to be had.
    using StartThread = std::function<bool(const Work& work)>;

    /// `mainQueue` outlives every task.
    explicit ThreadTaskPool(MainQueue& mainQueue, StartThread startThread = startDetachedThread)
        : m_mainQueue(mainQueue)
        , m_startThread(std::move(startThread)) {}

    void async(Work work) override { start(m_mainQueue, m_startThread, std::move(work)); }

private:
    /// Goes on trying after the pool has ended, too.
    static void start(MainQueue& mainQueue, const StartThread& startThread, Work work) {
        if (!startThread(work))
            mainQueue.asyncAfter(std::chrono::seconds(1), [&mainQueue, startThread, work = std::move(work)] {
                start(mainQueue, startThread, work);
            });
    }

    MainQueue& m_mainQueue;
    StartThread m_startThread;
};

} // namespace zofra
