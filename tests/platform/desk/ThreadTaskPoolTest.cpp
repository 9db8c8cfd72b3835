// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ThreadTaskPool.h"

#include "tests/support/ManualMainQueue.h"

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

TEST(ThreadTaskPoolTest, triesAgainWhenThereIsNoThreadToBeHad) {
    test::ManualMainQueue mainQueue;
    int refusals = 3;
    ThreadTaskPool pool(mainQueue, [&](const ThreadTaskPool::Work& work) {
        if (refusals-- > 0)
            return false;
        work();
        return true;
    });
    int runs = 0;
    pool.async([&] { ++runs; });
    mainQueue.advance(2999ms);
    EXPECT_EQ(runs, 0);
    mainQueue.advance(1ms);
    EXPECT_EQ(runs, 1);
    mainQueue.advance(1min);
    EXPECT_EQ(runs, 1);
}

} // namespace
} // namespace zofra
