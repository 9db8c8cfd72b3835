// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/playback/RadioPlayerTest.h"

namespace zofra::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RadioPlayerStallTest : public RadioPlayerTest {};

TEST_F(RadioPlayerStallTest, buffersAndAsksForSoundAtOnce) {
    auto& player = startPlaying();
    player.playerItem->playbackStalled.notify();
    EXPECT_FALSE(player.isBuffering) << "handled on the main queue, not in place";
    EXPECT_THAT(players.calls, IsEmpty());
    queue.drain();
    EXPECT_TRUE(player.isBuffering);
    EXPECT_THAT(players.calls, ElementsAre(QStringLiteral("1 play")));
    EXPECT_THAT(states, IsEmpty());
}

TEST_F(RadioPlayerStallTest, getsOneResumeEachTime) {
    auto& player = startPlaying();
    for (int i = 0; i < 50; ++i)
        player.playerItem->playbackStalled.notify();
    queue.drain();
    EXPECT_EQ(players.calls.count(QStringLiteral("1 play")), 50);
    EXPECT_EQ(players.made, 1);
}

TEST_F(RadioPlayerStallTest, whileStoppedIsIgnored) {
    auto& player = startPlaying();
    player.playerItem->playbackStalled.notify();
    player.stop();
    players.calls.clear();
    queue.drain();
    player.playerItem->playbackStalled.notify();
    queue.drain();
    EXPECT_FALSE(player.isBuffering);
    EXPECT_THAT(players.calls, IsEmpty());
}

TEST_F(RadioPlayerStallTest, ofAnEarlierItemIsIgnored) {
    auto& player = startPlaying();
    const auto first = player.playerItem;
    first->playbackStalled.notify();
    player.setStation(RadioStation::joe);
    first->playbackStalled.notify();
    players.current()->setStatus(TimeControlStatus::playing);
    players.calls.clear();
    queue.drain();
    EXPECT_FALSE(player.isBuffering);
    EXPECT_THAT(players.calls, IsEmpty());
}

class RadioPlayerFailureTest : public RadioPlayerTest {};

TEST_F(RadioPlayerFailureTest, movesToTheMp3StreamAndSaysSoInGerman) {
    auto& player = startPlaying();
    player.playerItem->failedToPlayToEndTime.notify();
    EXPECT_THAT(output.lines, IsEmpty()) << "handled on the main queue, not in place";
    queue.drain();
    EXPECT_THAT(output.lines,
                ElementsAre(QStringLiteral("AAC Stream fehlgeschlagen – wechsle zu MP3 Fallback (Zofra)")));
    EXPECT_THAT(players.urls(), ElementsAre(aac(RadioStation::zofra), mp3(RadioStation::zofra)));
    EXPECT_THAT(players.calls, ElementsAre(QStringLiteral("2 made for /zofra.mp3"),
                                           QStringLiteral("1 dropped"), QStringLiteral("2 volume 0.8"),
                                           QStringLiteral("2 observed"), QStringLiteral("2 play")));
    EXPECT_TRUE(player.isPlaying);
    EXPECT_TRUE(player.isBuffering);
    EXPECT_THAT(states, IsEmpty());
}

TEST_F(RadioPlayerFailureTest, namesTheStationAsItIsShown) {
    defaults.setString(QStringLiteral("zofra_selected_station"), QStringLiteral("zofra_class_x"));
    auto& player = startPlaying();
    player.playerItem->failedToPlayToEndTime.notify();
    queue.drain();
    EXPECT_THAT(output.lines, ElementsAre(QStringLiteral(
                                  "AAC Stream fehlgeschlagen – wechsle zu MP3 Fallback (Zofra Class X)")));
}

TEST_F(RadioPlayerFailureTest, ofTheMp3StreamSetsItUpAnewEachTime) {
    auto& player = startPlaying();
    for (int i = 0; i < 3; ++i) {
        player.playerItem->failedToPlayToEndTime.notify();
        queue.drain();
    }
    EXPECT_EQ(output.lines.size(), 3U);
    EXPECT_THAT(players.urls(), ElementsAre(aac(RadioStation::zofra), mp3(RadioStation::zofra),
                                            mp3(RadioStation::zofra), mp3(RadioStation::zofra)));
    EXPECT_EQ(players.alive.size(), 1U);
}

TEST_F(RadioPlayerFailureTest, whileStoppedIsIgnored) {
    auto& player = startPlaying();
    player.stop();
    player.playerItem->failedToPlayToEndTime.notify();
    queue.drain();
    EXPECT_THAT(output.lines, IsEmpty());
    EXPECT_EQ(players.made, 1);
    EXPECT_FALSE(player.isPlaying);
}

TEST_F(RadioPlayerFailureTest, toldBeforeAStopDoesNotBringTheSoundBack) {
    auto& player = startPlaying();
    player.playerItem->failedToPlayToEndTime.notify();
    player.stop();
    queue.drain();
    EXPECT_THAT(output.lines, IsEmpty());
    EXPECT_EQ(players.made, 1);
}

TEST_F(RadioPlayerFailureTest, ofAnEarlierItemIsIgnored) {
    auto& player = startPlaying();
    const auto first = player.playerItem;
    first->failedToPlayToEndTime.notify();
    player.setStation(RadioStation::joe);
    first->failedToPlayToEndTime.notify();
    queue.drain();
    EXPECT_THAT(output.lines, IsEmpty());
    EXPECT_THAT(players.urls(), ElementsAre(aac(RadioStation::zofra), aac(RadioStation::joe)));
}

TEST_F(RadioPlayerFailureTest, isForgottenByAStationChange) {
    auto& player = startPlaying();
    player.playerItem->failedToPlayToEndTime.notify();
    queue.drain();
    player.setStation(RadioStation::joe);
    EXPECT_EQ(player.playerItem->url, aac(RadioStation::joe));
    player.setStation(RadioStation::zofra);
    EXPECT_EQ(player.playerItem->url, aac(RadioStation::zofra));
}

TEST_F(RadioPlayerFailureTest, isRememberedOverStopAndPlay) {
    auto& player = startPlaying();
    player.playerItem->failedToPlayToEndTime.notify();
    queue.drain();
    player.stop();
    player.play();
    EXPECT_EQ(player.playerItem->url, mp3(RadioStation::zofra));
    player.drop();
    player.play();
    EXPECT_EQ(player.playerItem->url, aac(RadioStation::zofra));
}

TEST_F(RadioPlayerFailureTest, ofAStationWithOneAddressOpensThatAgain) {
    defaults.setString(QStringLiteral("zofra_selected_station"), QStringLiteral("radio_contact"));
    auto& player = startPlaying();
    player.playerItem->failedToPlayToEndTime.notify();
    queue.drain();
    EXPECT_THAT(players.urls(),
                ElementsAre(aac(RadioStation::radioContact), aac(RadioStation::radioContact)));
}

class RadioPlayerWakeTest : public RadioPlayerTest {};

TEST_F(RadioPlayerWakeTest, restartsOnTheAacStreamTwoSecondsLater) {
    auto& player = startPlaying();
    player.playerItem->failedToPlayToEndTime.notify();
    queue.drain();
    players.calls.clear();
    wake.didWake.notify();
    queue.advance(1999ms);
    EXPECT_THAT(players.calls, IsEmpty());
    queue.advance(1ms);
    EXPECT_THAT(players.calls, ElementsAre(QStringLiteral("3 made for /zofra.aac"),
                                           QStringLiteral("2 dropped"), QStringLiteral("3 volume 0.8"),
                                           QStringLiteral("3 observed"), QStringLiteral("3 play")));
    EXPECT_TRUE(player.isPlaying);
    EXPECT_THAT(states, IsEmpty());
}

TEST_F(RadioPlayerWakeTest, whileStoppedDoesNothing) {
    auto& player = startPlaying();
    player.stop();
    wake.didWake.notify();
    player.play();
    queue.advance(1min);
    EXPECT_EQ(players.made, 1);
}

TEST_F(RadioPlayerWakeTest, doesNothingWhenStoppedInBetween) {
    auto& player = startPlaying();
    wake.didWake.notify();
    queue.advance(1s);
    player.stop();
    queue.advance(1min);
    EXPECT_EQ(players.made, 1);
    EXPECT_FALSE(player.isPlaying);
}

TEST_F(RadioPlayerWakeTest, restartsTheStationChosenInBetween) {
    auto& player = startPlaying();
    wake.didWake.notify();
    player.setStation(RadioStation::qmusic);
    queue.advance(2s);
    EXPECT_THAT(players.urls(),
                ElementsAre(aac(RadioStation::zofra), aac(RadioStation::qmusic), aac(RadioStation::qmusic)));
}

TEST_F(RadioPlayerWakeTest, restartsWhenItIsPlayedAgainInBetween) {
    auto& player = startPlaying();
    wake.didWake.notify();
    player.stop();
    player.play();
    queue.advance(2s);
    EXPECT_EQ(players.made, 2);
}

TEST_F(RadioPlayerWakeTest, beforeAnythingWasPlayedDoesNothing) {
    start();
    wake.didWake.notify();
    queue.advance(1min);
    EXPECT_THAT(players.calls, IsEmpty());
}

} // namespace
} // namespace zofra::test
