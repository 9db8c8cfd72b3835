// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ThreadTaskPool.h"

#include <atomic>
#include <condition_variable>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <thread>

namespace zofra {
namespace {

using namespace std::chrono_literals;
constexpr auto limit = 20s;

/// A gate that tasks wait at until the test opens it.
class Gate {
public:
    void pass() {
        std::unique_lock lock(m_mutex);
        ++m_waiting;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isOpen; });
    }
    void open() {
        const std::scoped_lock lock(m_mutex);
        m_isOpen = true;
        m_changed.notify_all();
    }
    bool waitForWaiting(int count) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, limit, [&] { return m_waiting >= count; });
    }
    int waiting() {
        const std::scoped_lock lock(m_mutex);
        return m_waiting;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_waiting = 0;
    bool m_isOpen = false;
};

TEST(ThreadTaskPool, runsTasksOnOtherThreadsSideBySide) {
    auto gate = std::make_shared<Gate>();
    ThreadTaskPool pool;
    std::mutex mutex;
    std::set<std::thread::id> threads;
    for (int i = 0; i < 8; ++i) {
        pool.async([&, gate] {
            {
                const std::scoped_lock lock(mutex);
                threads.insert(std::this_thread::get_id());
            }
            gate->pass();
        });
    }
    ASSERT_TRUE(gate->waitForWaiting(8));
    {
        const std::scoped_lock lock(mutex);
        EXPECT_EQ(threads.size(), 8U);
        EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
    }
    gate->open();
}

TEST(ThreadTaskPool, keepsTasksFromOutsideToItsCap) {
    auto gate = std::make_shared<Gate>();
    ThreadTaskPool pool({.maxThreads = 3, .idleTime = 1s});
    auto done = std::make_shared<std::promise<void>>();
    auto left = std::make_shared<std::atomic<int>>(10);
    for (int i = 0; i < 10; ++i) {
        pool.async([gate, done, left] {
            gate->pass();
            if (--*left == 0)
                done->set_value();
        });
    }
    ASSERT_TRUE(gate->waitForWaiting(3));
    EXPECT_EQ(gate->waiting(), 3);
    EXPECT_EQ(pool.threadCount(), 3U);
    gate->open();
    EXPECT_EQ(done->get_future().wait_for(limit), std::future_status::ready);
}

TEST(ThreadTaskPool, alwaysHasAThreadForTasksThatTasksWaitFor) {
    // Every thread of the cap waits for a task of its own, and those for theirs.
    ThreadTaskPool pool({.maxThreads = 2, .idleTime = 1s});
    auto all = std::make_shared<std::promise<void>>();
    auto left = std::make_shared<std::atomic<int>>(6);
    for (int i = 0; i < 6; ++i) {
        pool.async([&pool, all, left] {
            std::promise<void> child;
            pool.async([&pool, &child] {
                std::promise<void> grandchild;
                pool.async([&grandchild] { grandchild.set_value(); });
                grandchild.get_future().wait();
                child.set_value();
            });
            child.get_future().wait();
            if (--*left == 0)
                all->set_value();
        });
    }
    EXPECT_EQ(all->get_future().wait_for(limit), std::future_status::ready);
}

TEST(ThreadTaskPool, endsIdleThreads) {
    ThreadTaskPool pool({.maxThreads = 4, .idleTime = 1ms});
    std::promise<void> ran;
    pool.async([&ran] { ran.set_value(); });
    ran.get_future().wait();
    const auto end = std::chrono::steady_clock::now() + limit;
    while (pool.threadCount() > 0 && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    EXPECT_EQ(pool.threadCount(), 0U);
}

TEST(ThreadTaskPool, usesAnIdleThreadAgain) {
    ThreadTaskPool pool({.maxThreads = 1, .idleTime = std::chrono::minutes(1)});
    std::set<std::thread::id> threads;
    for (int i = 0; i < 100; ++i) {
        std::promise<std::thread::id> ran;
        pool.async([&ran] { ran.set_value(std::this_thread::get_id()); });
        threads.insert(ran.get_future().get());
    }
    EXPECT_EQ(threads.size(), 1U);
    EXPECT_EQ(pool.threadCount(), 1U);
}

TEST(ThreadTaskPool, letsGoOfATaskBeforeItRestsOnItsThread) {
    ThreadTaskPool pool({.maxThreads = 1, .idleTime = std::chrono::minutes(1)});
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    std::promise<void> ran;
    pool.async([held = std::move(held), &ran] { ran.set_value(); });
    ran.get_future().wait();
    std::promise<void> next;
    pool.async([&next] { next.set_value(); });
    next.get_future().wait();
    EXPECT_TRUE(watched.expired());
}

TEST(ThreadTaskPool, mayEndWhileTasksRun) {
    auto gate = std::make_shared<Gate>();
    auto finished = std::make_shared<std::promise<void>>();
    auto ranLate = std::make_shared<std::atomic<bool>>(false);
    {
        ThreadTaskPool pool({.maxThreads = 1, .idleTime = 1s});
        pool.async([gate, finished] {
            gate->pass();
            finished->set_value();
        });
        ASSERT_TRUE(gate->waitForWaiting(1));
        pool.async([ranLate] { *ranLate = true; });
    }
    gate->open();
    EXPECT_EQ(finished->get_future().wait_for(limit), std::future_status::ready);
    EXPECT_FALSE(*ranLate) << "what had not begun is dropped";
}

} // namespace
} // namespace zofra
