// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/MpvStreamPlayer.h"

#include "tests/platform/audio/FakeAudioCore.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/PrintQt.h"
#include "tests/support/RecordingOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zofra::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto paused = TimeControlStatus::paused;
constexpr auto waiting = TimeControlStatus::waitingToPlayAtSpecifiedRate;
constexpr auto playing = TimeControlStatus::playing;

class MpvStreamPlayerTest : public ::testing::Test {
protected:
    /// A player with its records. Its number of stalls and failures counts its own item only.
    struct Listener {
        std::shared_ptr<StreamItem> item;
        std::unique_ptr<StreamPlayer> player;
        std::vector<TimeControlStatus> statuses;
        int stalls = 0;
        int failures = 0;
        ObservationToken status;
        ObservationToken stall;
        ObservationToken failure;
    };
    std::unique_ptr<Listener> listen(const char* url) {
        auto listener = std::make_unique<Listener>();
        listener->item = std::make_shared<StreamItem>(QUrl(QString::fromLatin1(url)));
        listener->player = std::make_unique<MpvStreamPlayer>(engine, listener->item);
        auto* target = listener.get();
        listener->status = listener->player->observeTimeControlStatus(
            [target](TimeControlStatus status) { target->statuses.push_back(status); });
        listener->stall = listener->item->playbackStalled.add([target] { ++target->stalls; });
        listener->failure = listener->item->failedToPlayToEndTime.add([target] { ++target->failures; });
        return listener;
    }
    /// A failure that the listener answers as the radio does: with a new player on the same address.
    std::unique_ptr<Listener> failAndReplace(std::unique_ptr<Listener> listener) {
        cores.last().tellEnded();
        EXPECT_EQ(listener->failures, 1);
        auto next = listen("https://a.example/x.mp3");
        listener.reset();
        next->player->play();
        return next;
    }

    FakeAudioCores cores;
    ManualMainQueue queue;
    RecordingSystemLog log;
    std::shared_ptr<AudioEngine> engine = std::make_shared<AudioEngine>(
        queue, log, [this] { return queue.elapsed(); }, [] { return 0.5; }, cores.maker());
};

TEST_F(MpvStreamPlayerTest, opensNothingBeforePlay) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->setVolume(0.5F);
    queue.advance(1h);
    EXPECT_EQ(cores.made, 0);
    EXPECT_THAT(radio->statuses, ElementsAre(paused)) << "told at once, and nothing since";
}

TEST_F(MpvStreamPlayerTest, setsVolumeBeforeItOpens) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->setVolume(0.5F);
    radio->player->play();
    EXPECT_THAT(cores.calls, ElementsAre(QStringLiteral("1 volume 0.5"), QStringLiteral("1 release"),
                                         QStringLiteral("1 load https://a.example/x.aac")));
    EXPECT_EQ(radio->player->timeControlStatus(), waiting);
    cores.last().tellPlaying();
    EXPECT_EQ(radio->player->timeControlStatus(), playing);
    EXPECT_THAT(radio->statuses, ElementsAre(paused, waiting, playing));
}

TEST_F(MpvStreamPlayerTest, failsWhenWhatComesNeverBecomesSound) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    queue.advance(14'999ms);
    EXPECT_EQ(radio->failures, 0);
    EXPECT_EQ(radio->player->timeControlStatus(), waiting);
    queue.advance(1ms);
    EXPECT_EQ(radio->failures, 1);
}

TEST_F(MpvStreamPlayerTest, aStreamThatSoundsIsNotTakenForOneThatNeverWill) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    queue.advance(1h);
    EXPECT_EQ(radio->failures, 0);
    EXPECT_EQ(radio->player->timeControlStatus(), playing);
}

TEST_F(MpvStreamPlayerTest, givesUpAStreamThatIsMoreSilentThanNot) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    // A second of sound, then a wait of four, again and again: never long enough for a time-out.
    auto waited = 0s;
    while (radio->failures == 0 && waited < 1min) {
        queue.advance(1s);
        cores.last().tellStall();
        queue.advance(4s);
        waited += 4s;
        if (radio->failures == 0)
            cores.last().tell({EngineEvent::pausedForCache(false), EngineEvent::coreIdle(false)});
    }
    EXPECT_EQ(radio->failures, 1);
    EXPECT_EQ(waited, 20s) << "15 s, and what the sound in between made up for";
}

TEST_F(MpvStreamPlayerTest, keepsAStreamThatIsSilentNowAndThen) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    for (int i = 0; i < 100; ++i) {
        queue.advance(10s);
        cores.last().tellStall();
        queue.advance(9s);
        cores.last().tell({EngineEvent::pausedForCache(false), EngineEvent::coreIdle(false)});
    }
    EXPECT_EQ(radio->failures, 0);
}

TEST_F(MpvStreamPlayerTest, soundMakesUpForNoMoreSilenceThanOneMayLast) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    queue.advance(1h);
    cores.last().tellStall();
    queue.advance(14'999ms);
    EXPECT_EQ(radio->failures, 0);
    queue.advance(1ms);
    EXPECT_EQ(radio->failures, 1);
}

TEST_F(MpvStreamPlayerTest, doesNotCountTheSilenceOfAPause) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    cores.last().tellStall();
    queue.advance(14s);
    radio->player->pause();
    queue.advance(2s);
    radio->player->play();
    queue.advance(999ms);
    EXPECT_EQ(radio->failures, 0);
    queue.advance(1ms);
    EXPECT_EQ(radio->failures, 1);
}

TEST_F(MpvStreamPlayerTest, changesTheVolumeWhileItPlays) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    cores.calls.clear();
    radio->player->setVolume(0.25F);
    EXPECT_THAT(cores.calls, ElementsAre(QStringLiteral("1 volume 0.25")));
}

TEST_F(MpvStreamPlayerTest, askedAgainGoesOnAsItIs) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    cores.calls.clear();
    radio->player->play();
    EXPECT_THAT(cores.calls, ElementsAre(QStringLiteral("1 release")));
    EXPECT_EQ(radio->player->timeControlStatus(), playing);
}

TEST_F(MpvStreamPlayerTest, aShortPauseGoesOnWithTheSameConnection) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    cores.calls.clear();
    radio->player->pause();
    EXPECT_EQ(radio->player->timeControlStatus(), paused);
    queue.advance(2999ms);
    radio->player->play();
    queue.advance(1min);
    EXPECT_THAT(cores.calls, ElementsAre(QStringLiteral("1 hold"), QStringLiteral("1 release")));
}

TEST_F(MpvStreamPlayerTest, aLongPauseDropsTheConnectionAndTheNextPlayOpensItAgain) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    cores.calls.clear();
    radio->player->pause();
    radio->player->pause();
    queue.advance(3s);
    EXPECT_THAT(cores.calls, ElementsAre(QStringLiteral("1 hold"), QStringLiteral("1 stop")));
    EXPECT_EQ(radio->player->timeControlStatus(), paused);
    cores.calls.clear();
    queue.advance(1h);
    radio->player->play();
    EXPECT_THAT(cores.calls, ElementsAre(QStringLiteral("1 volume 1"), QStringLiteral("1 release"),
                                         QStringLiteral("1 load https://a.example/x.aac")));
    cores.last().tellPlaying();
    EXPECT_THAT(radio->statuses, ElementsAre(paused, waiting, playing, paused, waiting, playing));
    EXPECT_EQ(radio->failures, 0);
}

TEST_F(MpvStreamPlayerTest, aPauseWhileOpeningStaysAPause) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    radio->player->pause();
    cores.last().tellPlaying();
    EXPECT_EQ(radio->player->timeControlStatus(), paused);
    EXPECT_THAT(radio->statuses, ElementsAre(paused, waiting, paused));
}

TEST_F(MpvStreamPlayerTest, tellsAStallOnce) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    cores.last().tellStall();
    EXPECT_EQ(radio->stalls, 1);
    EXPECT_EQ(radio->player->timeControlStatus(), waiting);
    radio->player->play();
    EXPECT_EQ(radio->stalls, 1);
    cores.last().tell({EngineEvent::coreIdle(false), EngineEvent::pausedForCache(false)});
    EXPECT_EQ(radio->player->timeControlStatus(), playing);
    cores.last().tellStall();
    EXPECT_EQ(radio->stalls, 2);
    EXPECT_EQ(radio->failures, 0);
}

TEST_F(MpvStreamPlayerTest, tellsAFailureOnceAndStaysWaiting) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    cores.last().tellEnded();
    queue.advance(1min);
    EXPECT_EQ(radio->failures, 1);
    EXPECT_EQ(radio->player->timeControlStatus(), waiting);
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(MpvStreamPlayerTest, doesNotTellAFailureToWhoHasPaused) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    radio->player->pause();
    cores.last().tellEnded();
    EXPECT_EQ(radio->failures, 0);
    EXPECT_EQ(radio->player->timeControlStatus(), paused);
    queue.advance(1min);
    radio->player->play();
    EXPECT_EQ(radio->failures, 0);
    EXPECT_TRUE(cores.last().isOpen());
}

TEST_F(MpvStreamPlayerTest, doesNotTellAFailureToWhoPausesOnTheWay) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    const auto token = radio->player->observeTimeControlStatus([&](TimeControlStatus status) {
        if (status == waiting)
            radio->player->pause();
    });
    cores.last().tellEnded();
    EXPECT_EQ(radio->failures, 0);
}

TEST_F(MpvStreamPlayerTest, opensAgainWhenAskedAfterAFailure) {
    const auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellEnded();
    radio->player->play();
    EXPECT_TRUE(cores.last().isOpen()) << "the first time at once";
    cores.last().tellEnded();
    radio->player->play();
    EXPECT_FALSE(cores.last().isOpen());
    queue.advance(249ms);
    EXPECT_FALSE(cores.last().isOpen());
    queue.advance(1ms);
    EXPECT_TRUE(cores.last().isOpen());
    EXPECT_EQ(radio->failures, 2);
}

TEST_F(MpvStreamPlayerTest, isSilentAtItsEndAndTellsNothingMore) {
    auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    cores.calls.clear();
    radio->player.reset();
    EXPECT_THAT(cores.calls, ElementsAre(QStringLiteral("1 stop")));
    cores.last().tellEnded();
    queue.advance(1min);
    EXPECT_EQ(radio->failures, 0);
    EXPECT_THAT(radio->statuses, ElementsAre(paused, waiting, playing));
}

TEST_F(MpvStreamPlayerTest, mayBeEndedByWhomItTells) {
    for (const bool atStatus : {true, false}) {
        auto radio = listen("https://a.example/x.aac");
        radio->player->play();
        cores.last().tellPlaying();
        ObservationToken token;
        if (atStatus)
            token = radio->player->observeTimeControlStatus([&](TimeControlStatus status) {
                if (status == waiting)
                    radio->player.reset();
            });
        else
            token = radio->item->failedToPlayToEndTime.add([&] { radio->player.reset(); });
        cores.last().tellEnded();
        EXPECT_EQ(radio->player, nullptr);
        EXPECT_EQ(radio->failures, atStatus ? 0 : 1);
    }
}

TEST_F(MpvStreamPlayerTest, withoutAnItemOpensNothing) {
    auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    radio->player->replaceCurrentItem(nullptr);
    EXPECT_FALSE(cores.last().isOpen());
    EXPECT_EQ(radio->player->timeControlStatus(), waiting);
    radio->player->pause();
    radio->player->play();
    queue.advance(1min);
    EXPECT_FALSE(cores.last().isOpen());
    EXPECT_EQ(radio->failures, 0);
}

TEST_F(MpvStreamPlayerTest, opensAnotherItemInPlaceOfTheFirst) {
    auto radio = listen("https://a.example/x.aac");
    radio->player->play();
    cores.last().tellPlaying();
    cores.calls.clear();
    radio->player->replaceCurrentItem(
        std::make_shared<StreamItem>(QUrl(QStringLiteral("https://a.example/y.aac"))));
    EXPECT_THAT(cores.calls,
                ElementsAre(QStringLiteral("1 stop"), QStringLiteral("1 volume 1"),
                            QStringLiteral("1 release"), QStringLiteral("1 load https://a.example/y.aac")));
    cores.last().tellEnded();
    EXPECT_EQ(radio->failures, 0) << "that was not its item";
}

class SharedEngineTest : public MpvStreamPlayerTest {};

TEST_F(SharedEngineTest, usesOneCoreForOnePlayerAfterTheOther) {
    auto radio = listen("https://a.example/0.aac");
    radio->player->play();
    for (int i = 0; i < 200; ++i) {
        cores.last().tellPlaying();
        auto next = listen("https://a.example/1.aac");
        radio = std::move(next);
        radio->player->play();
    }
    EXPECT_EQ(cores.made, 1);
}

TEST_F(SharedEngineTest, givesEachOfTwoPlayersItsOwnEvents) {
    const auto first = listen("https://a.example/1.aac");
    const auto second = listen("https://a.example/2.aac");
    first->player->play();
    second->player->play();
    ASSERT_EQ(cores.alive.size(), 2U);
    cores.alive[0]->tellPlaying();
    EXPECT_EQ(first->player->timeControlStatus(), playing);
    EXPECT_EQ(second->player->timeControlStatus(), waiting);
    cores.alive[1]->tellEnded();
    EXPECT_EQ(first->failures, 0);
    EXPECT_EQ(second->failures, 1);
}

TEST_F(SharedEngineTest, keepsNoMoreThanOneSpareCore) {
    auto first = listen("https://a.example/1.aac");
    auto second = listen("https://a.example/2.aac");
    first->player->play();
    second->player->play();
    first.reset();
    second.reset();
    EXPECT_EQ(cores.alive.size(), 1U);
}

TEST_F(SharedEngineTest, pacesNewPlayersOnAnAddressThatFails) {
    auto radio = listen("https://a.example/x.mp3");
    radio->player->play();
    int opened = 1;
    for (const auto wait : {0ms, 250ms, 500ms, 1000ms, 2000ms, 4000ms, 8000ms, 10000ms, 10000ms}) {
        radio = failAndReplace(std::move(radio));
        EXPECT_EQ(radio->player->timeControlStatus(), waiting);
        if (wait > 0ms) {
            queue.advance(wait - 1ms);
            EXPECT_FALSE(cores.last().isOpen());
            queue.advance(1ms);
        }
        EXPECT_TRUE(cores.last().isOpen());
        ++opened;
    }
    EXPECT_EQ(cores.calls.filter(QStringLiteral("load")).size(), opened);
    EXPECT_EQ(cores.made, 1);
}

TEST_F(SharedEngineTest, doesNotMakeAnotherAddressWait) {
    auto radio = listen("https://a.example/x.mp3");
    radio->player->play();
    for (int i = 0; i < 2; ++i)
        radio = failAndReplace(std::move(radio));
    ASSERT_FALSE(cores.last().isOpen());
    auto other = listen("https://a.example/y.aac");
    radio.reset();
    other->player->play();
    EXPECT_TRUE(cores.last().isOpen());
}

TEST_F(SharedEngineTest, stopsWaitingWhenPausedOrEnded) {
    auto radio = listen("https://a.example/x.mp3");
    radio->player->play();
    radio = failAndReplace(std::move(radio));
    radio = failAndReplace(std::move(radio));
    radio->player->pause();
    queue.advance(1min);
    EXPECT_FALSE(cores.last().isOpen());
    engine->tryNow();
    EXPECT_FALSE(cores.last().isOpen());
    radio->player->play();
    EXPECT_TRUE(cores.last().isOpen());
    radio = failAndReplace(std::move(radio));
    radio.reset();
    EXPECT_EQ(queue.pendingTimers(), 0U);
}

TEST_F(SharedEngineTest, triesAtOnceWhenTheNetworkHasChanged) {
    auto radio = listen("https://a.example/x.mp3");
    radio->player->play();
    for (int i = 0; i < 6; ++i)
        radio = failAndReplace(std::move(radio)), queue.advance(i < 5 ? 10s : 0s);
    ASSERT_FALSE(cores.last().isOpen());
    engine->tryNow();
    EXPECT_TRUE(cores.last().isOpen());
    const auto opened = cores.calls.filter(QStringLiteral("load")).size();
    queue.advance(10s);
    EXPECT_EQ(cores.calls.filter(QStringLiteral("load")).size(), opened)
        << "not a second time when the wait would have been over";
    radio = failAndReplace(std::move(radio));
    EXPECT_FALSE(cores.last().isOpen()) << "one try, then waiting goes on";
}

TEST_F(SharedEngineTest, beginsPacingAnewAfterThirtySecondsOfSoundInAll) {
    auto radio = listen("https://a.example/x.mp3");
    radio->player->play();
    for (int i = 0; i < 4; ++i) {
        radio = failAndReplace(std::move(radio));
        queue.advance(10s);
    }
    cores.last().tellPlaying();
    queue.advance(16s);
    cores.last().tellStall();
    queue.advance(9s);
    cores.last().tell({EngineEvent::coreIdle(false), EngineEvent::pausedForCache(false)});
    queue.advance(14s);
    radio = failAndReplace(std::move(radio));
    EXPECT_TRUE(cores.last().isOpen()) << "a good stream that broke is tried at once";
}

TEST_F(SharedEngineTest, goesOnPacingWhenThereWasLittleSound) {
    auto radio = listen("https://a.example/x.mp3");
    radio->player->play();
    for (int i = 0; i < 3; ++i) {
        radio = failAndReplace(std::move(radio));
        queue.advance(10s);
    }
    cores.last().tellPlaying();
    queue.advance(16s);
    cores.last().tellStall();
    queue.advance(14s);
    cores.last().tell({EngineEvent::coreIdle(false), EngineEvent::pausedForCache(false)});
    queue.advance(13s);
    radio = failAndReplace(std::move(radio));
    EXPECT_FALSE(cores.last().isOpen()) << "silence does not count";
    queue.advance(1s);
    EXPECT_TRUE(cores.last().isOpen());
}

TEST_F(SharedEngineTest, reportsAMissingDeviceOnceUntilThereIsSoundAgain) {
    auto radio = listen("https://a.example/x.mp3");
    radio->player->play();
    for (int i = 0; i < 5; ++i) {
        cores.last().tellEnded(EndCause::noAudioDevice);
        radio->player->play();
        queue.advance(10s);
    }
    EXPECT_EQ(radio->failures, 5);
    EXPECT_THAT(log.lines, ElementsAre(QStringLiteral("There is no audio device to play on")));
    const auto comeAndGo = [&] {
        cores.last().tellPlaying();
        cores.last().tellEnded(EndCause::noAudioDevice);
        radio->player->play();
    };
    comeAndGo();
    EXPECT_EQ(log.lines.size(), 1U) << "not again within a minute";
    queue.advance(10s);
    comeAndGo();
    EXPECT_EQ(log.lines.size(), 2U);
}

TEST_F(SharedEngineTest, reportsEachReasonOnce) {
    engine->report(QStringLiteral("a"));
    engine->report(QStringLiteral("b"));
    engine->report(QStringLiteral("a"));
    EXPECT_THAT(log.lines, ElementsAre(QStringLiteral("a"), QStringLiteral("b")));
}

TEST_F(SharedEngineTest, outlivesTheFactoryAsLongAsAPlayerNeedsIt) {
    auto radio = listen("https://a.example/x.aac");
    engine.reset();
    radio->player->play();
    cores.last().tellPlaying();
    EXPECT_EQ(radio->player->timeControlStatus(), playing);
    radio.reset();
    EXPECT_THAT(cores.alive, IsEmpty());
}

} // namespace
} // namespace zofra::test
