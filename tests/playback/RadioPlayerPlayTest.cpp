// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/playback/RadioPlayerTest.h"

namespace zofra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RadioPlayerPlayTest : public RadioPlayerTest {};

TEST_F(RadioPlayerPlayTest, opensTheAacStreamOfTheCurrentStation) {
    auto& player = start();
    player.play();
    EXPECT_THAT(players.urls(), ElementsAre(aac(RadioStation::zofra)));
    ASSERT_NE(player.playerItem, nullptr);
    EXPECT_EQ(player.playerItem->url, aac(RadioStation::zofra));
    EXPECT_TRUE(player.isPlaying);
    EXPECT_THAT(states, ElementsAre(true));
}

TEST_F(RadioPlayerPlayTest, setsTheVolumeBeforeItObservesAndPlays) {
    defaults.setFloat(QStringLiteral("zofra_radio_volume"), 0.5F);
    start().play();
    EXPECT_THAT(players.calls, ElementsAre(QStringLiteral("1 made for /zofra.aac"),
                                           QStringLiteral("1 volume 0.5"), QStringLiteral("1 observed"),
                                           QStringLiteral("1 volume 0.5"), QStringLiteral("1 play")));
}

TEST_F(RadioPlayerPlayTest, saysThatItPlaysOnlyAfterTheStreamWasToldTo) {
    auto& player = start();
    bool told = false;
    player.onPlaybackStateChanged = [&](bool playing) {
        told = true;
        EXPECT_TRUE(playing);
        EXPECT_TRUE(player.isPlaying);
        EXPECT_TRUE(players.current()->wanted);
    };
    player.play();
    EXPECT_TRUE(told);
}

TEST_F(RadioPlayerPlayTest, worksWithoutCallbacks) {
    RadioPlayer player({players, defaults, queue, nowPlaying, commands, wake, output, hosts});
    player.play();
    players.current()->setStatus(TimeControlStatus::playing);
    queue.drain();
    EXPECT_TRUE(player.isPlaying);
    player.setStation(RadioStation::joe);
    player.stop();
    EXPECT_FALSE(player.isPlaying);
}

TEST_F(RadioPlayerPlayTest, buffersUntilSoundFlows) {
    auto& player = start();
    player.play();
    EXPECT_FALSE(player.isBuffering) << "a status change acts only on the main queue";
    queue.drain();
    EXPECT_TRUE(player.isBuffering);
    players.current()->setStatus(TimeControlStatus::playing);
    EXPECT_TRUE(player.isBuffering);
    queue.drain();
    EXPECT_FALSE(player.isBuffering);
    EXPECT_TRUE(player.isPlaying);
    EXPECT_THAT(states, ElementsAre(true, true));
}

TEST_F(RadioPlayerPlayTest, resumesAHeldPlayerAsItIs) {
    auto& player = startPlaying();
    player.stop();
    player.play();
    EXPECT_THAT(players.calls, ElementsAre(QStringLiteral("1 pause"), QStringLiteral("1 volume 0.8"),
                                           QStringLiteral("1 play")));
    EXPECT_EQ(players.made, 1);
}

TEST_F(RadioPlayerPlayTest, asksTheStreamAgainWhileItPlays) {
    startPlaying().play();
    EXPECT_THAT(players.calls, ElementsAre(QStringLiteral("1 volume 0.8"), QStringLiteral("1 play")));
    EXPECT_THAT(states, ElementsAre(true));
}

class RadioPlayerStatusTest : public RadioPlayerTest {};

TEST_F(RadioPlayerStatusTest, pausedWhilePlayingCountsAsBuffering) {
    auto& player = startPlaying();
    players.current()->setStatus(TimeControlStatus::paused);
    queue.drain();
    EXPECT_TRUE(player.isPlaying);
    EXPECT_TRUE(player.isBuffering);
    EXPECT_THAT(states, IsEmpty());
}

TEST_F(RadioPlayerStatusTest, pausedWhileStoppedChangesNothing) {
    auto& player = startPlaying();
    player.stop();
    players.current()->announceStatus();
    queue.drain();
    EXPECT_FALSE(player.isPlaying);
    EXPECT_FALSE(player.isBuffering);
    EXPECT_THAT(states, ElementsAre(false));
}

TEST_F(RadioPlayerStatusTest, waitingIsBufferingAlsoWhileStopped) {
    auto& player = startPlaying();
    player.stop();
    players.current()->setStatus(TimeControlStatus::waitingToPlayAtSpecifiedRate);
    queue.drain();
    EXPECT_FALSE(player.isPlaying);
    EXPECT_TRUE(player.isBuffering);
}

TEST_F(RadioPlayerStatusTest, playingMeansPlayingAlsoWhenNobodyAskedForIt) {
    auto& player = startPlaying();
    player.stop();
    queue.drain();
    states.clear();
    players.current()->setStatus(TimeControlStatus::playing);
    queue.drain();
    EXPECT_TRUE(player.isPlaying);
    EXPECT_FALSE(player.isBuffering);
    EXPECT_THAT(states, ElementsAre(true));
}

TEST_F(RadioPlayerStatusTest, isTheOneOfTheMomentItIsActedOn) {
    auto& player = startPlaying();
    players.current()->setStatus(TimeControlStatus::waitingToPlayAtSpecifiedRate);
    players.current()->setStatus(TimeControlStatus::playing);
    player.stop();
    queue.drain();
    EXPECT_FALSE(player.isPlaying) << "what was announced before the stop is over";
    EXPECT_FALSE(player.isBuffering);
    EXPECT_THAT(states, ElementsAre(false));
}

TEST_F(RadioPlayerStatusTest, ofADroppedObservationDoesNothing) {
    auto& player = startPlaying();
    players.current()->setStatus(TimeControlStatus::waitingToPlayAtSpecifiedRate);
    player.setStation(RadioStation::joe);
    ASSERT_EQ(queue.pendingWork(), 3U) << "one of the old player, the first and the asked-for one of the new";
    players.current()->setStatus(TimeControlStatus::playing);
    player.isBuffering = false;
    queue.drain();
    EXPECT_FALSE(player.isBuffering);
    EXPECT_THAT(states, ElementsAre(true, true, true))
        << "told by the three observations of the new player alone";
}

TEST_F(RadioPlayerStatusTest, afterTheDropDoesNothing) {
    auto& player = startPlaying();
    players.current()->setStatus(TimeControlStatus::waitingToPlayAtSpecifiedRate);
    player.drop();
    queue.drain();
    EXPECT_FALSE(player.isBuffering);
    EXPECT_THAT(states, ElementsAre(false));
}

TEST_F(RadioPlayerStatusTest, afterTheEndOfTheRadioPlayerDoesNothing) {
    startPlaying();
    players.current()->setStatus(TimeControlStatus::waitingToPlayAtSpecifiedRate);
    players.item()->playbackStalled.notify();
    players.item()->failedToPlayToEndTime.notify();
    wake.didWake.notify();
    ASSERT_GT(queue.pendingWork(), 0U);
    radio.reset();
    queue.advance(std::chrono::seconds(3));
    EXPECT_THAT(states, IsEmpty());
    EXPECT_THAT(output.lines, IsEmpty());
    EXPECT_EQ(players.made, 1);
}

class RadioPlayerPublishingTest : public RadioPlayerTest {};

TEST_F(RadioPlayerPublishingTest, announcesAChangeBeforeItHappens) {
    auto& player = start();
    std::vector<bool> seen;
    const auto token = player.observe([&] { seen.push_back(player.isPlaying); });
    player.play();
    EXPECT_THAT(seen, ElementsAre(false));
    player.stop();
    EXPECT_THAT(seen, ElementsAre(false, true, false)) << "playing, then buffering";
}

class RadioPlayerStationTest : public RadioPlayerTest {};

TEST_F(RadioPlayerStationTest, thatIsTheCurrentOneChangesNothing) {
    auto& player = startPlaying();
    player.setStation(RadioStation::zofra);
    EXPECT_THAT(stations, IsEmpty());
    EXPECT_THAT(defaults.writes, IsEmpty());
    EXPECT_THAT(players.calls, IsEmpty());
}

TEST_F(RadioPlayerStationTest, whileStoppedIsKeptAndToldButOpensNothing) {
    auto& player = start();
    player.setStation(RadioStation::qmusic);
    EXPECT_EQ(player.currentStation.get(), RadioStation::qmusic);
    EXPECT_EQ(defaults.string(QStringLiteral("zofra_selected_station")), QStringLiteral("qmusic"));
    EXPECT_THAT(stations, ElementsAre(QStringLiteral("qmusic")));
    EXPECT_THAT(players.calls, IsEmpty());
    EXPECT_THAT(states, IsEmpty());
    player.play();
    EXPECT_THAT(players.urls(), ElementsAre(aac(RadioStation::qmusic)));
}

TEST_F(RadioPlayerStationTest, isKeptBeforeItIsTold) {
    auto& player = start();
    QString kept;
    player.onStationChanged = [&](RadioStation station) {
        EXPECT_EQ(station, RadioStation::joe);
        EXPECT_EQ(player.currentStation.get(), RadioStation::joe);
        kept = defaults.string(QStringLiteral("zofra_selected_station")).value_or(QString());
    };
    player.setStation(RadioStation::joe);
    EXPECT_EQ(kept, QStringLiteral("joe"));
}

TEST_F(RadioPlayerStationTest, whilePlayingMovesToItsAacStream) {
    auto& player = startPlaying();
    player.setStation(RadioStation::qmusic);
    EXPECT_THAT(players.calls,
                ElementsAre(QStringLiteral("2 made for /qmusic.aac"), QStringLiteral("1 dropped"),
                            QStringLiteral("2 volume 0.8"), QStringLiteral("2 observed"),
                            QStringLiteral("2 volume 0.8"), QStringLiteral("2 play")));
    EXPECT_TRUE(player.isPlaying);
    EXPECT_THAT(states, IsEmpty()) << "the playing state has not changed";
    queue.drain();
    EXPECT_TRUE(player.isBuffering);
}

TEST_F(RadioPlayerStationTest, chosenWhileAPlayerIsHeldIsNotHeardAfterPlay) {
    auto& player = startPlaying();
    player.stop();
    player.setStation(RadioStation::qmusic);
    player.play();
    EXPECT_EQ(players.made, 1);
    EXPECT_EQ(player.playerItem->url, aac(RadioStation::zofra));
    EXPECT_EQ(player.currentStation.get(), RadioStation::qmusic);
}

TEST_F(RadioPlayerStationTest, toldToSomeoneWhoStopsOpensNothing) {
    auto& player = startPlaying();
    player.onStationChanged = [&](RadioStation) { player.stop(); };
    player.setStation(RadioStation::qmusic);
    EXPECT_EQ(players.made, 1);
    EXPECT_FALSE(player.isPlaying);
}

class RadioPlayerStopTest : public RadioPlayerTest {};

TEST_F(RadioPlayerStopTest, pausesClearsBothFlagsAndTells) {
    auto& player = start();
    player.play();
    queue.drain();
    ASSERT_TRUE(player.isBuffering);
    states.clear();
    players.calls.clear();
    player.onPlaybackStateChanged = [&](bool playing) {
        states.push_back(playing);
        EXPECT_FALSE(player.isPlaying);
        EXPECT_FALSE(player.isBuffering);
        EXPECT_FALSE(players.current()->wanted);
    };
    player.stop();
    EXPECT_THAT(players.calls, ElementsAre(QStringLiteral("1 pause")));
    EXPECT_THAT(states, ElementsAre(false));
    EXPECT_NE(player.player, nullptr);
}

TEST_F(RadioPlayerStopTest, tellsAlsoWithoutAStream) {
    start().stop();
    EXPECT_THAT(states, ElementsAre(false));
}

TEST_F(RadioPlayerStopTest, stays) {
    auto& player = startPlaying();
    player.stop();
    queue.drain();
    EXPECT_FALSE(player.isBuffering) << "the status that the pause itself brings is not a lost sound";
}

TEST_F(RadioPlayerStopTest, dropAlsoLetsGoOfItemAndPlayer) {
    auto& player = startPlaying();
    player.drop();
    EXPECT_THAT(players.calls, ElementsAre(QStringLiteral("1 pause"), QStringLiteral("1 item none"),
                                           QStringLiteral("1 dropped")));
    EXPECT_EQ(player.player, nullptr);
    EXPECT_EQ(player.playerItem, nullptr);
    EXPECT_THAT(states, ElementsAre(false));
}

TEST_F(RadioPlayerStopTest, dropWithoutAStreamIsAStop) {
    start().drop();
    EXPECT_THAT(states, ElementsAre(false));
    EXPECT_THAT(players.calls, IsEmpty());
}

TEST_F(RadioPlayerStopTest, playAfterADropOpensTheAacStreamOfTheStationChosenMeanwhile) {
    auto& player = startPlaying();
    player.drop();
    player.setStation(RadioStation::qmusic);
    player.play();
    EXPECT_THAT(players.urls(), ElementsAre(aac(RadioStation::zofra), aac(RadioStation::qmusic)));
    players.current()->setStatus(TimeControlStatus::playing);
    queue.drain();
    EXPECT_FALSE(player.isBuffering);
}

} // namespace
} // namespace zofra::test
