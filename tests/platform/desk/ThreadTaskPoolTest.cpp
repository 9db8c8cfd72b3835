// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ThreadTaskPool.h"

#include "tests/support/ManualMainQueue.h"

#include <atomic>
#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <memory>
#include <thread>

namespace zofra {
namespace {

using namespace std::chrono_literals;
constexpr auto limit = 20s;

TEST(ThreadTaskPoolTest, runsTasksOnOtherThreadsSideBySide) {
    test::ManualMainQueue mainQueue;
    ThreadTaskPool pool(mainQueue);
    // Each waits for all the others.
    const auto all = std::make_shared<std::latch>(8);
    std::vector<std::future<std::thread::id>> ran;
    for (int i = 0; i < 8; ++i) {
        const auto done = std::make_shared<std::promise<std::thread::id>>();
        ran.push_back(done->get_future());
        pool.async([all, done] {
            all->arrive_and_wait();
            done->set_value(std::this_thread::get_id());
        });
    }
    for (auto& one : ran) {
        ASSERT_EQ(one.wait_for(limit), std::future_status::ready);
        EXPECT_NE(one.get(), std::this_thread::get_id());
    }
}

TEST(ThreadTaskPoolTest, hasAThreadForTasksThatTasksWaitFor) {
    test::ManualMainQueue mainQueue;
    ThreadTaskPool pool(mainQueue);
    std::promise<void> done;
    pool.async([&] {
        std::promise<void> child;
        pool.async([&] { child.set_value(); });
        child.get_future().wait();
        done.set_value();
    });
    EXPECT_EQ(done.get_future().wait_for(limit), std::future_status::ready);
}

/// Whether `done` comes while the time of `mainQueue` moves on.
bool comes(test::ManualMainQueue& mainQueue, std::future<void> done) {
    for (auto waited = 0ms; waited < limit; waited += 1ms) {
        if (done.wait_for(1ms) == std::future_status::ready)
            return true;
        mainQueue.advance(1s);
    }
    return false;
}

TEST(ThreadTaskPoolTest, triesAgainEachSecondWhenThereIsNoThreadAtAll) {
    test::ManualMainQueue mainQueue;
    std::atomic<int> starts = 0;
    ThreadTaskPool pool(mainQueue, [&](const ThreadTaskPool::Work& work) {
        return ++starts > 4 && startDetachedThread(work);
    });
    std::promise<void> done;
    pool.async([&] { done.set_value(); });
    EXPECT_EQ(starts, 2);
    mainQueue.advance(1999ms);
    EXPECT_EQ(starts, 3);
    mainQueue.advance(1ms);
    EXPECT_EQ(starts, 4);
    EXPECT_TRUE(comes(mainQueue, done.get_future()));
    EXPECT_EQ(starts, 6);
}

TEST(ThreadTaskPoolTest, triesAgainWhenThereIsNoThreadForATask) {
    test::ManualMainQueue mainQueue;
    std::atomic<int> starts = 0;
    ThreadTaskPool pool(mainQueue, [&](const ThreadTaskPool::Work& work) {
        const int start = ++starts;
        return (start < 2 || start > 4) && startDetachedThread(work);
    });
    std::promise<void> done;
    pool.async([&] { done.set_value(); });
    EXPECT_TRUE(comes(mainQueue, done.get_future()));
    EXPECT_EQ(starts, 5);
}

TEST(ThreadTaskPoolTest, whoGivesATaskDoesNotWaitForItsThread) {
    test::ManualMainQueue mainQueue;
    // As the C library does while libraries are being loaded.
    std::promise<void> loaded;
    const auto untilLoaded = loaded.get_future().share();
    std::atomic<int> starts = 0;
    ThreadTaskPool pool(mainQueue, [&](const ThreadTaskPool::Work& work) {
        if (++starts > 1)
            untilLoaded.wait();
        return startDetachedThread(work);
    });
    std::promise<void> done;
    pool.async([&] { done.set_value(); });
    loaded.set_value();
    EXPECT_EQ(done.get_future().wait_for(limit), std::future_status::ready);
}

} // namespace
} // namespace zofra
