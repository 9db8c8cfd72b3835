// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/QtMainQueue.h"

#include "tests/support/EventLoop.h"

#include <QEventLoop>
#include <QThread>

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <thread>
#include <vector>

namespace zofra {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using test::spinUntil;

TEST(QtMainQueueTest, runsLaterAndInOrder) {
    const test::TestApplication application;
    QtMainQueue queue;
    std::vector<int> order;
    queue.async([&] {
        order.push_back(1);
        queue.async([&] { order.push_back(3); });
    });
    queue.async([&] { order.push_back(2); });
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(spinUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST(QtMainQueueTest, bringsWorkOfManyThreadsToTheMainThread) {
    const test::TestApplication application;
    QtMainQueue queue;
    std::vector<std::vector<int>> seen(4);
    int count = 0;
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < seen.size(); ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 1000; ++i)
                queue.async([&, t, i] {
                    EXPECT_TRUE(QThread::currentThread() == QCoreApplication::instance()->thread());
                    seen[t].push_back(i);
                    ++count;
                });
        });
    }
    EXPECT_TRUE(spinUntil([&] { return count == 4000; }));
    for (auto& thread : threads)
        thread.join();
    for (const auto& numbers : seen)
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
}

TEST(QtMainQueueTest, keepsRunningInsideANestedEventLoop) {
    const test::TestApplication application;
    QtMainQueue queue;
    std::vector<int> order;
    QEventLoop nested;
    queue.async([&] {
        order.push_back(1);
        nested.exec();
        order.push_back(4);
    });
    queue.async([&] {
        order.push_back(2);
        queue.async([&] {
            order.push_back(3);
            nested.quit();
        });
    });
    ASSERT_TRUE(spinUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, (std::vector{1, 2, 3, 4}));
}

TEST(QtMainQueueTest, runsDelayedWorkNeverEarly) {
    const test::TestApplication application;
    QtMainQueue queue;
    const auto start = steady_clock::now();
    std::vector<steady_clock::duration> early;
    int ran = 0;
    const auto check = [&](std::chrono::milliseconds delay) {
        return [&, delay] {
            ++ran;
            if (steady_clock::now() - start < delay)
                early.push_back(steady_clock::now() - start);
        };
    };
    queue.asyncAfter(60ms, check(60ms));
    std::thread([&] { queue.asyncAfter(20ms, check(20ms)); }).join();
    queue.asyncAfter(-5ms, check(-5ms));
    EXPECT_EQ(ran, 0);
    ASSERT_TRUE(spinUntil([&] { return ran == 3; }));
    EXPECT_TRUE(early.empty());
}

TEST(QtMainQueueTest, repeatsATimerUntilItIsDestroyed) {
    const test::TestApplication application;
    QtMainQueue queue;
    int ticks = 0;
    auto timer = queue.startTimer(1ms, MainQueue::Repeat::forever, [&] { ++ticks; });
    ASSERT_TRUE(spinUntil([&] { return ticks == 3; }));
    timer.reset();
    bool isOver = false;
    queue.asyncAfter(20ms, [&] { isOver = true; });
    ASSERT_TRUE(spinUntil([&] { return isOver; }));
    EXPECT_EQ(ticks, 3);
}

TEST(QtMainQueueTest, firesASingleTimerOnce) {
    const test::TestApplication application;
    QtMainQueue queue;
    int ticks = 0;
    const auto timer = queue.startTimer(1ms, MainQueue::Repeat::once, [&] { ++ticks; });
    bool isOver = false;
    queue.asyncAfter(30ms, [&] { isOver = true; });
    ASSERT_TRUE(spinUntil([&] { return isOver; }));
    EXPECT_EQ(ticks, 1);
}

TEST(QtMainQueueTest, letsATimersHandlerDestroyTheTimer) {
    const test::TestApplication application;
    QtMainQueue queue;
    int ticks = 0;
    std::unique_ptr<Timer> timer;
    auto captured = std::make_shared<int>(7);
    timer = queue.startTimer(1ms, MainQueue::Repeat::forever, [&, captured] {
        timer.reset();
        ticks += *captured;
    });
    captured.reset();
    bool isOver = false;
    queue.asyncAfter(20ms, [&] { isOver = true; });
    ASSERT_TRUE(spinUntil([&] { return isOver; }));
    EXPECT_EQ(ticks, 7);
}

TEST(QtMainQueueTest, outlivesTheApplication) {
    std::optional<QtMainQueue> queue;
    std::unique_ptr<Timer> timer;
    int ran = 0;
    {
        const test::TestApplication application;
        queue.emplace();
        timer = queue->startTimer(1ms, MainQueue::Repeat::forever, [&] { ++ran; });
    }
    ran = 0;
    queue->async([&] { ++ran; });
    queue->asyncAfter(0ms, [&] { ++ran; });
    std::thread([&] { queue->async([&] { ++ran; }); }).join();
    timer.reset();
    queue.reset();
    EXPECT_EQ(ran, 0);
}

TEST(QtMainQueueTest, dropsItsWorkWhenItEnds) {
    const test::TestApplication application;
    int ran = 0;
    auto held = std::make_shared<int>(0);
    const std::weak_ptr<int> watched = held;
    {
        QtMainQueue queue;
        queue.async([&ran, held = std::move(held)] { ++ran; });
        queue.asyncAfter(0ms, [&] { ++ran; });
    }
    EXPECT_TRUE(watched.expired());
    QCoreApplication::processEvents();
    EXPECT_EQ(ran, 0);
}

} // namespace
} // namespace zofra
