// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/TaskPool.h"
#include "platform/linux/DetachedThread.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace zofra {

/// A background thread for each task: those that wait for others never take a thread away from them. A task
/// for which the system has no thread to give waits, and is tried again every second. Nobody ever waits for
/// the threads; they end with their task.
///
/// One more thread starts the others and lasts: while libraries are being loaded the C library lets whoever
/// starts a thread wait, and the caller may be the main thread.
class ThreadTaskPool final : public TaskPool {
public:
    using Work = std::function<void()>;
    /// Runs `work` on a thread of its own; false when there is none to be had.
    using StartThread = std::function<bool(const Work& work)>;

    /// `mainQueue` outlives every task.
    explicit ThreadTaskPool(MainQueue& mainQueue, StartThread startThread = startDetachedThread)
        : m_starter(std::make_shared<Starter>(mainQueue, std::move(startThread))) {
        const std::lock_guard lock(m_starter->mutex);
        static_cast<void>(m_starter->begin());
    }

    /// From any thread.
    void async(Work work) override { m_starter->give(std::move(work)); }

private:
    /// The thread that starts the others, and what waits for it. Outlives the pool.
    struct Starter : std::enable_shared_from_this<Starter> {
        Starter(MainQueue& queue, StartThread start)
            : mainQueue(queue)
            , startThread(std::move(start)) {}

        [[nodiscard]] bool begin() {
            return isThere || (isThere = startThread([self = shared_from_this()] { self->run(); }));
        }

        void give(Work work) {
            {
                const std::lock_guard lock(mutex);
                if (!begin())
                    return giveAgain(std::move(work));
                waiting.push_back(std::move(work));
            }
            hasWork.notify_one();
        }

        void giveAgain(Work work) {
            mainQueue.asyncAfter(std::chrono::seconds(1),
                                 [self = shared_from_this(), work = std::move(work)] { self->give(work); });
        }

        [[noreturn]] void run() {
            for (;;) {
                std::unique_lock lock(mutex);
                hasWork.wait(lock, [this] { return !waiting.empty(); });
                auto work = std::move(waiting.front());
                waiting.pop_front();
                lock.unlock();
                if (!startThread(work))
                    giveAgain(std::move(work));
            }
        }

        MainQueue& mainQueue;
        const StartThread startThread;
        std::mutex mutex;
        std::condition_variable hasWork;
        std::deque<Work> waiting;
        bool isThere = false;
    };

    std::shared_ptr<Starter> m_starter;
};

} // namespace zofra
