// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/ReadPacing.h"

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

using namespace std::chrono_literals;
using Clock = ReadPacing::Clock;

/// A reader with a clock of its own.
struct Reader {
    Clock::time_point now{1000s};
    ReadPacing pacing{now};
    Clock::duration sound{0};

    /// Waits as told, then reads; returns how long it waited.
    Clock::duration read(qsizetype bytes, Clock::duration brought, Clock::duration took) {
        const auto pause = pacing.pauseBefore(now);
        now += pause;
        const auto began = now;
        now += took;
        sound += brought;
        pacing.hasRead(began, now, bytes, sound);
        return pause;
    }
};

TEST(ReadPacingTest, letsAStationBeginAtFullSpeed) {
    Reader reader;
    EXPECT_EQ(reader.read(1400, 100ms, 300ms), 0s) << "connecting";
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(reader.read(16'384, 1s, 1ms), 0s);
}

TEST(ReadPacingTest, takesAFloodNoFasterThanFourTimesTheHighestBitRate) {
    Reader reader;
    const auto began = reader.now;
    qsizetype bytes = 0;
    for (; bytes < 10'000'000; bytes += 16'384)
        reader.read(16'384, 0s, 1us);
    const double seconds = std::chrono::duration<double>(reader.now - began).count();
    EXPECT_NEAR(static_cast<double>(bytes - 524'288) / seconds, 160'000, 2000);
}

TEST(ReadPacingTest, readsEachPieceAtOnceWhileLittleIsInHand) {
    Reader reader;
    reader.read(20'000, 1200ms, 50ms);
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(reader.read(320, 20ms, 20ms), 0s);
}

TEST(ReadPacingTest, restsBetweenReadsWhileSecondsAreInHand) {
    Reader reader;
    reader.read(64'000, 4s, 50ms);
    EXPECT_EQ(reader.read(8'000, 500ms, 1ms), 1s);
    EXPECT_EQ(reader.read(8'000, 500ms, 1ms), 0s) << "what came meanwhile is fetched in one go";
    EXPECT_EQ(reader.read(320, 20ms, 20ms), 0s);
    EXPECT_EQ(reader.read(320, 20ms, 20ms), 1s);
}

TEST(ReadPacingTest, hurriesAgainWhenThePlayerHasUsedUpWhatWasInHand) {
    Reader reader;
    reader.read(64'000, 4s, 50ms);
    reader.now += 3s; // Nobody asked for more meanwhile.
    EXPECT_EQ(reader.read(320, 20ms, 20ms), 0s);
}

} // namespace
} // namespace zofra::test
