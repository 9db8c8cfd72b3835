// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/playback/RadioPlayerTest.h"

namespace zofra::test {
namespace {

using ::testing::ElementsAre;

class RadioPlayerControlsTest : public RadioPlayerTest {};

TEST_F(RadioPlayerControlsTest, toggleStartsAndStops) {
    auto& player = start();
    EXPECT_EQ(commands.togglePlayPause(), RemoteCommandStatus::success);
    EXPECT_TRUE(player.isPlaying);
    EXPECT_EQ(commands.togglePlayPause(), RemoteCommandStatus::success);
    EXPECT_FALSE(player.isPlaying);
    EXPECT_THAT(states, ElementsAre(true, false));
    EXPECT_EQ(players.calls.back(), QStringLiteral("1 pause"));
}

TEST_F(RadioPlayerControlsTest, playPlaysAlsoWhilePlaying) {
    auto& player = startPlaying();
    EXPECT_EQ(commands.play(), RemoteCommandStatus::success);
    EXPECT_TRUE(player.isPlaying);
    EXPECT_THAT(states, ElementsAre(true));
    EXPECT_EQ(players.made, 1);
}

TEST_F(RadioPlayerControlsTest, pauseRunsTheStopSequence) {
    auto& player = start();
    player.play();
    queue.drain();
    ASSERT_TRUE(player.isBuffering);
    EXPECT_EQ(commands.pause(), RemoteCommandStatus::success);
    EXPECT_FALSE(player.isPlaying);
    EXPECT_FALSE(player.isBuffering);
    EXPECT_THAT(states, ElementsAre(true, false));
}

TEST_F(RadioPlayerControlsTest, pauseWhileStoppedTellsAgain) {
    start();
    EXPECT_EQ(commands.pause(), RemoteCommandStatus::success);
    EXPECT_THAT(states, ElementsAre(false));
}

TEST_F(RadioPlayerControlsTest, answerSuccessWhenThePlayerIsGone) {
    startPlaying();
    radio.reset();
    players.calls.clear();
    EXPECT_EQ(commands.togglePlayPause(), RemoteCommandStatus::success);
    EXPECT_EQ(commands.play(), RemoteCommandStatus::success);
    EXPECT_EQ(commands.pause(), RemoteCommandStatus::success);
    EXPECT_TRUE(players.calls.isEmpty());
}

class RadioPlayerNowPlayingTest : public RadioPlayerTest {};

TEST_F(RadioPlayerNowPlayingTest, showsTitleArtistAndTheLiveFlag) {
    start().updateNowPlayingInfo(QStringLiteral("Song"), QStringLiteral("Band"));
    EXPECT_THAT(nowPlaying.shown,
                ElementsAre(NowPlayingInfo{QStringLiteral("Song"), QStringLiteral("Band"), true}));
}

TEST_F(RadioPlayerNowPlayingTest, leavesOutAMissingOrEmptyArtist) {
    auto& player = start();
    player.updateNowPlayingInfo(QStringLiteral("Song"), std::nullopt);
    player.updateNowPlayingInfo(QStringLiteral("Song"), QString());
    player.updateNowPlayingInfo(QStringLiteral("Song"), QStringLiteral(""));
    const NowPlayingInfo withoutArtist{QStringLiteral("Song"), std::nullopt, true};
    EXPECT_THAT(nowPlaying.shown, ElementsAre(withoutArtist, withoutArtist, withoutArtist));
}

TEST_F(RadioPlayerNowPlayingTest, keepsABlankArtistAndAnEmptyTitle) {
    start().updateNowPlayingInfo(QString(), QStringLiteral(" "));
    EXPECT_THAT(nowPlaying.shown, ElementsAre(NowPlayingInfo{QString(), QStringLiteral(" "), true}));
}

} // namespace
} // namespace zofra::test
