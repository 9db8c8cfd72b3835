// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/speakers/Background.h"

#include "speakers/BackgroundWait.h"
#include "tests/support/PrintQt.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace zofra {
namespace {

TEST(WaitPoint, AConditionThatHoldsIsNotWaitedFor) {
    WaitPoint point;
    int changes = 0;
    EXPECT_TRUE(point.wait([] { return true; }, [&] { ++changes; }));
    EXPECT_EQ(changes, 1);
}

TEST(WaitPoint, TheEndWinsOverTheCondition) {
    WaitPoint point;
    point.end();
    int changes = 0;
    EXPECT_FALSE(point.wait([] { return true; }, [&] { ++changes; }));
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(point.ended());
}

TEST(WaitPoint, ADeadlineEndsAWaitInVain) {
    WaitPoint point;
    int changes = 0;
    EXPECT_TRUE(point.waitUntil(
        std::chrono::steady_clock::now(), [] { return false; }, [&] { ++changes; }));
    EXPECT_EQ(changes, 1);
}

TEST(WaitPoint, TheEndWakesEveryoneWhoWaits) {
    const auto point = std::make_shared<WaitPoint>();
    CountingSemaphore semaphore(point, 0);
    DispatchGroup group(point);
    group.enter();
    bool results[2] = {true, true};
    std::thread first([&] { results[0] = semaphore.wait(); });
    std::thread second([&] { results[1] = group.wait(); });
    point->end();
    first.join();
    second.join();
    EXPECT_FALSE(results[0]);
    EXPECT_FALSE(results[1]);
}

TEST(CountingSemaphore, GivesWhatItHasAndWaitsForMore) {
    CountingSemaphore semaphore(std::make_shared<WaitPoint>(), 1);
    EXPECT_TRUE(semaphore.wait());
    std::thread other([&] { semaphore.signal(); });
    EXPECT_TRUE(semaphore.wait());
    other.join();
}

TEST(DispatchGroup, WaitsUntilEveryoneHasLeft) {
    DispatchGroup group(std::make_shared<WaitPoint>());
    EXPECT_TRUE(group.wait()) << "nobody entered";
    int left = 0;
    group.enter();
    group.enter();
    std::thread other([&] {
        ++left;
        group.leave();
        ++left;
        group.leave();
    });
    EXPECT_TRUE(group.wait());
    EXPECT_EQ(left, 2);
    other.join();
}

TEST(Finally, RunsOnceWhenToldOrWhenLetGo) {
    int runs = 0;
    auto told = finally([&] { ++runs; });
    told->run();
    told->run();
    told.reset();
    EXPECT_EQ(runs, 1);
    auto first = finally([&] { ++runs; });
    auto second = first;
    first.reset();
    EXPECT_EQ(runs, 1) << "somebody still holds it";
    second.reset();
    EXPECT_EQ(runs, 2);
}

TEST(SpeakerBackground, LogsWithItsPrefix) {
    test::Background background;
    background.state->log(QStringLiteral("Zeile"));
    EXPECT_EQ(background.log.lines, std::vector<QString>{QStringLiteral("[Sonos] Zeile")});
}

TEST(SpeakerBackground, PostsToTheMainQueueUnlessTheManagerHasEnded) {
    test::Background background;
    int runs = 0;
    background.state->post([&] { ++runs; });
    EXPECT_EQ(runs, 0);
    background.mainQueue.drain();
    EXPECT_EQ(runs, 1);
    background.state->post([&] { ++runs; });
    background.state->end();
    background.mainQueue.drain();
    EXPECT_EQ(runs, 1) << "posted before the end, due after it";
}

TEST(SpeakerBackground, LeavesTheOutsideAloneFromTheEndOn) {
    test::Background background;
    background.network.addInterface(QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), QString());
    background.state->end();
    int calls = 0;
    background.state->log(QStringLiteral("Zeile"));
    background.state->start({}, [&](const HttpResult&) { ++calls; });
    background.state->async([&] { ++calls; });
    background.state->post([&] { ++calls; });
    background.state->noteLocalNetworkDenial();
    EXPECT_TRUE(background.state->interfaceAddresses().empty());
    EXPECT_FALSE(background.state->openSearchSocket(QStringLiteral("10.0.0.2")));
    EXPECT_EQ(background.mainQueue.pendingWork(), 0U);
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(background.log.lines.empty());
    EXPECT_TRUE(background.session.requests.empty());
    EXPECT_TRUE(background.network.opened().empty());
}

} // namespace
} // namespace zofra
