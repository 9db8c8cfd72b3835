// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/ReconnectPacing.h"

#include "tests/support/PrintQt.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace zofra::test {
namespace {

using namespace std::chrono_literals;

class ReconnectPacingTest : public ::testing::Test {
protected:
    /// Fails and answers the wait that follows, after having waited.
    std::chrono::milliseconds failAndWait() {
        pacing.failed(address, 0ms);
        const auto wait = pacing.waitBefore(address);
        now += wait;
        return wait;
    }

    std::chrono::milliseconds now{1'000'000};
    double fraction = 0.5;
    ReconnectPacing pacing{[this] { return now; }, [this] { return fraction; }};
    const QUrl address{QStringLiteral("https://a.example/x.aac")};
    const QUrl other{QStringLiteral("https://a.example/x.mp3")};
};

TEST_F(ReconnectPacingTest, anUnknownAddressMayBeOpened) {
    EXPECT_EQ(pacing.waitBefore(address), 0ms);
}

TEST_F(ReconnectPacingTest, isAtOnceFirstThenDoublesUpToTenSeconds) {
    for (const auto expected : {0ms, 250ms, 500ms, 1000ms, 2000ms, 4000ms, 8000ms, 10000ms, 10000ms, 10000ms})
        EXPECT_EQ(failAndWait(), expected);
}

TEST_F(ReconnectPacingTest, staysAtTenSecondsHoweverLongItGoesOn) {
    for (int i = 0; i < 10'000; ++i)
        failAndWait();
    EXPECT_EQ(failAndWait(), 10000ms);
}

TEST_F(ReconnectPacingTest, isAQuarterLessAtTheLowest) {
    fraction = 0.0;
    for (const auto expected : {0ms, 187ms, 375ms, 750ms, 1500ms, 3000ms, 6000ms, 7500ms, 7500ms})
        EXPECT_EQ(failAndWait(), expected);
}

TEST_F(ReconnectPacingTest, isAQuarterMoreAtTheHighestButNeverAboveTenSeconds) {
    fraction = 0.9999999;
    for (const auto expected : {0ms, 312ms, 624ms, 1249ms, 2499ms, 4999ms, 9999ms})
        EXPECT_EQ(failAndWait(), expected);
    EXPECT_EQ(failAndWait(), 7501ms) << "12.5 s folded back";
}

TEST_F(ReconnectPacingTest, spreadsTheLongestWaitOverAQuarter) {
    for (int i = 0; i < 10; ++i)
        failAndWait();
    std::set<std::chrono::milliseconds> waits;
    for (int i = 0; i < 100; ++i) {
        fraction = i / 100.0;
        const auto wait = failAndWait();
        EXPECT_GE(wait, 7500ms);
        EXPECT_LE(wait, 10000ms);
        waits.insert(wait);
    }
    EXPECT_GT(waits.size(), 45U);
}

TEST_F(ReconnectPacingTest, outlastsARandomSourceThatMisbehaves) {
    fraction = 1e300;
    failAndWait();
    EXPECT_EQ(failAndWait(), 312ms);
    fraction = -5;
    EXPECT_EQ(failAndWait(), 375ms);
}

TEST_F(ReconnectPacingTest, countsDownWhileTimePasses) {
    failAndWait();
    failAndWait();
    pacing.failed(address, 0ms);
    now += 400ms;
    EXPECT_EQ(pacing.waitBefore(address), 100ms);
    now += 500ms;
    EXPECT_EQ(pacing.waitBefore(address), 0ms);
}

TEST_F(ReconnectPacingTest, isKeptForEachAddress) {
    failAndWait();
    pacing.failed(address, 0ms);
    EXPECT_EQ(pacing.waitBefore(address), 250ms);
    EXPECT_EQ(pacing.waitBefore(other), 0ms);
    pacing.failed(other, 0ms);
    EXPECT_EQ(pacing.waitBefore(other), 0ms) << "its own first failure";
}

TEST_F(ReconnectPacingTest, beginsAnewAfterThirtySecondsOfSound) {
    for (int i = 0; i < 6; ++i)
        failAndWait();
    pacing.failed(address, 30s);
    EXPECT_EQ(pacing.waitBefore(address), 0ms);
    EXPECT_EQ(failAndWait(), 250ms);
}

TEST_F(ReconnectPacingTest, goesOnAfterLessThanThirtySecondsOfSound) {
    failAndWait();
    failAndWait();
    pacing.failed(address, 29'999ms);
    EXPECT_EQ(pacing.waitBefore(address), 500ms);
}

TEST_F(ReconnectPacingTest, beginsAnewWhenAProvenStreamWasClosed) {
    failAndWait();
    failAndWait();
    pacing.closed(address, 29'999ms);
    EXPECT_EQ(failAndWait(), 500ms);
    pacing.closed(address, 30s);
    EXPECT_EQ(failAndWait(), 0ms);
}

TEST_F(ReconnectPacingTest, triesEveryAddressAtOnceWhenAskedTo) {
    for (int i = 0; i < 5; ++i)
        failAndWait();
    pacing.failed(address, 0ms);
    ASSERT_EQ(pacing.waitBefore(address), 4s);
    pacing.tryNow();
    EXPECT_EQ(pacing.waitBefore(address), 0ms);
    EXPECT_EQ(failAndWait(), 8s) << "one try, no new beginning";
}

TEST_F(ReconnectPacingTest, remembersTheLatestAddressesOnly) {
    failAndWait();
    failAndWait();
    for (int i = 0; i < 1000; ++i) {
        now += 1ms;
        pacing.failed(QUrl(QStringLiteral("https://a.example/%1").arg(i)), 0ms);
    }
    pacing.failed(address, 0ms);
    EXPECT_EQ(pacing.waitBefore(address), 0ms) << "long forgotten";
}

} // namespace
} // namespace zofra::test
