// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/EngineState.h"

#include <gtest/gtest.h>
#include <initializer_list>

namespace zofra::test {
namespace {

constexpr auto paused = TimeControlStatus::paused;
constexpr auto waiting = TimeControlStatus::waitingToPlayAtSpecifiedRate;
constexpr auto playing = TimeControlStatus::playing;

/// The orders of events below were recorded from libmpv 0.35.1 playing from servers on the same computer.
class EngineStateTest : public ::testing::Test {
protected:
    EngineState::Outcome batch(std::initializer_list<EngineEvent> events) {
        for (const auto& event : events)
            state.take(event);
        return state.conclude();
    }
    EngineState::Outcome want(EngineState::Sound sound) {
        state.want(sound);
        return state.conclude();
    }
    void startPlaying() {
        state.want(EngineState::Sound::wanted);
        state.opening();
        batch({EngineEvent::coreIdle(true), EngineEvent::pausedForCache(false)});
        batch({EngineEvent::fileLoaded()});
        ASSERT_EQ(batch({EngineEvent::playbackRestarted(), EngineEvent::coreIdle(false)}).status, playing);
    }

    EngineState state;
};

TEST_F(EngineStateTest, beginsPaused) {
    const auto outcome = state.conclude();
    EXPECT_EQ(outcome.status, paused);
    EXPECT_FALSE(outcome.stalled);
    EXPECT_FALSE(outcome.failed);
    EXPECT_FALSE(outcome.ended);
    EXPECT_FALSE(state.isOpen());
}

TEST_F(EngineStateTest, waitsFromTheWishToTheSound) {
    EXPECT_EQ(want(EngineState::Sound::wanted).status, waiting);
    state.opening();
    EXPECT_TRUE(state.isOpen());
    EXPECT_EQ(batch({EngineEvent::coreIdle(true), EngineEvent::pausedForCache(false)}).status, waiting);
    EXPECT_EQ(batch({EngineEvent::fileLoaded()}).status, waiting);
    EXPECT_EQ(batch({EngineEvent::pausedForCache(false), EngineEvent::playbackRestarted()}).status, waiting);
    EXPECT_EQ(batch({EngineEvent::coreIdle(false)}).status, playing);
}

TEST_F(EngineStateTest, doesNotTakeTheSoundOfTheStreamBeforeForItsOwn) {
    state.want(EngineState::Sound::wanted);
    state.opening();
    EXPECT_EQ(
        batch({EngineEvent::coreIdle(false), EngineEvent::pausedForCache(false), EngineEvent::fileLoaded()})
            .status,
        waiting);
    EXPECT_EQ(batch({EngineEvent::playbackRestarted()}).status, playing);
}

TEST_F(EngineStateTest, isPausedAtOnceWhateverTheEngineDoes) {
    startPlaying();
    EXPECT_EQ(want(EngineState::Sound::notWanted).status, paused);
    EXPECT_EQ(batch({EngineEvent::coreIdle(true)}).status, paused);
    EXPECT_EQ(want(EngineState::Sound::wanted).status, waiting);
    EXPECT_EQ(batch({EngineEvent::coreIdle(false)}).status, playing);
}

TEST_F(EngineStateTest, stallsOnceUntilTheDataIsBack) {
    startPlaying();
    auto outcome = batch({EngineEvent::coreIdle(true), EngineEvent::pausedForCache(true)});
    EXPECT_EQ(outcome.status, waiting);
    EXPECT_TRUE(outcome.stalled);
    EXPECT_FALSE(state.conclude().stalled);
    EXPECT_FALSE(want(EngineState::Sound::wanted).stalled) << "being asked again is not a new stall";
    outcome = batch({EngineEvent::coreIdle(false), EngineEvent::pausedForCache(false)});
    EXPECT_EQ(outcome.status, playing);
    EXPECT_FALSE(outcome.stalled);
    EXPECT_TRUE(batch({EngineEvent::coreIdle(true), EngineEvent::pausedForCache(true)}).stalled);
}

TEST_F(EngineStateTest, stallsAlsoWhenTheTwoNewsComeApart) {
    startPlaying();
    EXPECT_FALSE(batch({EngineEvent::coreIdle(true)}).stalled);
    EXPECT_TRUE(batch({EngineEvent::pausedForCache(true)}).stalled);
    EXPECT_EQ(batch({EngineEvent::coreIdle(false)}).status, playing);
    EXPECT_FALSE(batch({EngineEvent::pausedForCache(false)}).stalled);
}

TEST_F(EngineStateTest, tellsNoStallTogetherWithPlaying) {
    startPlaying();
    auto outcome = batch({EngineEvent::pausedForCache(true)});
    EXPECT_EQ(outcome.status, playing);
    EXPECT_FALSE(outcome.stalled)
        << "whoever buffers now would wait for a playing that has been told already";
    outcome = batch({EngineEvent::coreIdle(true)});
    EXPECT_EQ(outcome.status, waiting);
    EXPECT_TRUE(outcome.stalled);
}

TEST_F(EngineStateTest, doesNotStallOverAGapThatIsOverWhenLookedAt) {
    startPlaying();
    const auto outcome = batch({EngineEvent::coreIdle(true), EngineEvent::pausedForCache(true),
                                EngineEvent::coreIdle(false), EngineEvent::pausedForCache(false)});
    EXPECT_EQ(outcome.status, playing);
    EXPECT_FALSE(outcome.stalled);
}

TEST_F(EngineStateTest, doesNotStallWhilePausedNorAfterwards) {
    startPlaying();
    want(EngineState::Sound::notWanted);
    EXPECT_FALSE(batch({EngineEvent::coreIdle(true), EngineEvent::pausedForCache(true)}).stalled);
    EXPECT_FALSE(want(EngineState::Sound::wanted).stalled);
}

TEST_F(EngineStateTest, doesNotStallBeforeTheFirstSound) {
    state.want(EngineState::Sound::wanted);
    state.opening();
    EXPECT_FALSE(batch({EngineEvent::pausedForCache(true), EngineEvent::fileLoaded()}).stalled);
}

TEST_F(EngineStateTest, failsOnceWhenTheStreamEnds) {
    startPlaying();
    EXPECT_EQ(batch({EngineEvent::coreIdle(true)}).status, waiting);
    auto outcome = batch({EngineEvent::ended(EndCause::stream)});
    EXPECT_TRUE(outcome.failed);
    EXPECT_EQ(outcome.ended, EndCause::stream);
    EXPECT_EQ(outcome.status, waiting);
    EXPECT_FALSE(state.isOpen());
    outcome = state.conclude();
    EXPECT_FALSE(outcome.failed);
    EXPECT_FALSE(outcome.ended);
    EXPECT_EQ(outcome.status, waiting);
}

TEST_F(EngineStateTest, failsWhenItCannotBeOpened) {
    state.want(EngineState::Sound::wanted);
    state.opening();
    EXPECT_FALSE(batch({EngineEvent::coreIdle(true), EngineEvent::pausedForCache(false)}).failed);
    EXPECT_TRUE(batch({EngineEvent::ended(EndCause::stream)}).failed);
}

TEST_F(EngineStateTest, failsDuringAStallWithoutASecondStall) {
    startPlaying();
    batch({EngineEvent::coreIdle(true), EngineEvent::pausedForCache(true)});
    const auto outcome = batch({EngineEvent::ended(EndCause::stream), EngineEvent::pausedForCache(false)});
    EXPECT_TRUE(outcome.failed);
    EXPECT_FALSE(outcome.stalled);
}

TEST_F(EngineStateTest, endsWithoutFailingWhenNobodyWantsSound) {
    startPlaying();
    want(EngineState::Sound::notWanted);
    const auto outcome = batch({EngineEvent::ended(EndCause::stream)});
    EXPECT_FALSE(outcome.failed);
    EXPECT_EQ(outcome.ended, EndCause::stream);
    EXPECT_EQ(outcome.status, paused);
    EXPECT_FALSE(want(EngineState::Sound::wanted).failed) << "nor later";
}

TEST_F(EngineStateTest, saysWhyItEnded) {
    startPlaying();
    EXPECT_EQ(batch({EngineEvent::ended(EndCause::noAudioDevice)}).ended, EndCause::noAudioDevice);
}

TEST_F(EngineStateTest, closedOnPurposeIsNoFailure) {
    startPlaying();
    state.closed();
    const auto outcome = state.conclude();
    EXPECT_FALSE(outcome.failed);
    EXPECT_FALSE(outcome.ended);
    EXPECT_EQ(outcome.status, waiting);
}

TEST_F(EngineStateTest, ignoresWhatComesWhenNothingIsOpen) {
    state.want(EngineState::Sound::wanted);
    const auto outcome = batch({EngineEvent::fileLoaded(), EngineEvent::playbackRestarted(),
                                EngineEvent::coreIdle(false), EngineEvent::ended(EndCause::stream)});
    EXPECT_EQ(outcome.status, waiting);
    EXPECT_FALSE(outcome.failed);
}

TEST_F(EngineStateTest, startsAfreshWithEachConnection) {
    startPlaying();
    state.opening();
    EXPECT_EQ(batch({EngineEvent::coreIdle(false)}).status, waiting);
    EXPECT_EQ(batch({EngineEvent::fileLoaded()}).status, waiting);
    EXPECT_EQ(batch({EngineEvent::playbackRestarted()}).status, playing);
}

} // namespace
} // namespace zofra::test
