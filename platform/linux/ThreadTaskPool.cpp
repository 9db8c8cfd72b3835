// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ThreadTaskPool.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace zofra {

/// The thread that starts the others, and what waits for it. Outlives the pool.
struct ThreadTaskPool::Starter : std::enable_shared_from_this<Starter> {
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

ThreadTaskPool::ThreadTaskPool(MainQueue& mainQueue, StartThread startThread)
    : m_starter(std::make_shared<Starter>(mainQueue, std::move(startThread))) {
    const std::lock_guard lock(m_starter->mutex);
    static_cast<void>(m_starter->begin());
}

void ThreadTaskPool::async(Work work) {
    m_starter->give(std::move(work));
}

} // namespace zofra
