// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/playback/RadioPlayerTest.h"

#include <limits>

namespace zofra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RadioPlayerStartTest : public RadioPlayerTest {};

TEST_F(RadioPlayerStartTest, isSilentOnZofraAtFourFifthsWhenNothingIsStored) {
    const auto& player = start();
    EXPECT_FALSE(player.isPlaying);
    EXPECT_FALSE(player.isBuffering);
    EXPECT_FLOAT_EQ(player.volume, 0.8F);
    EXPECT_EQ(player.currentStation.get(), RadioStation::zofra);
    EXPECT_EQ(player.player, nullptr);
    EXPECT_EQ(player.playerItem, nullptr);
    EXPECT_EQ(player.volumeDefaultsKey, QStringLiteral("zofra_radio_volume"));
}

TEST_F(RadioPlayerStartTest, hasNoCallbacksOfItsOwn) {
    const RadioPlayer player({players, defaults, queue, nowPlaying, commands, wake, output, hosts});
    EXPECT_FALSE(player.onPlaybackStateChanged);
    EXPECT_FALSE(player.onStationChanged);
}

TEST_F(RadioPlayerStartTest, opensNoStreamWritesNothingAndShowsNothing) {
    start();
    queue.advance(std::chrono::hours(1));
    EXPECT_THAT(players.calls, IsEmpty());
    EXPECT_THAT(defaults.writes, IsEmpty());
    EXPECT_THAT(nowPlaying.shown, IsEmpty());
    EXPECT_THAT(output.lines, IsEmpty());
    EXPECT_THAT(states, IsEmpty());
    EXPECT_THAT(stations, IsEmpty());
}

TEST_F(RadioPlayerStartTest, readsTheStationThenTheVolumeThenTheStationAgain) {
    start();
    EXPECT_THAT(defaults.reads,
                ElementsAre(QStringLiteral("zofra_selected_station"), QStringLiteral("zofra_radio_volume"),
                            QStringLiteral("zofra_selected_station")));
}

TEST_F(RadioPlayerStartTest, takesOverTheStoredStation) {
    defaults.setString(QStringLiteral("zofra_selected_station"), QStringLiteral("sud_radio_hainaut"));
    EXPECT_EQ(start().currentStation.get(), RadioStation::sudRadioHainaut);
}

TEST_F(RadioPlayerStartTest, takesOverAStoredVolume) {
    defaults.setFloat(QStringLiteral("zofra_radio_volume"), 0.35F);
    EXPECT_FLOAT_EQ(start().volume, 0.35F);
}

TEST_F(RadioPlayerStartTest, comesBackAtFourFifthsAfterAStoredSilence) {
    defaults.setFloat(QStringLiteral("zofra_radio_volume"), 0.0F);
    EXPECT_FLOAT_EQ(start().volume, 0.8F);
}

TEST_F(RadioPlayerStartTest, doesNotTakeOverANegativeVolume) {
    defaults.setFloat(QStringLiteral("zofra_radio_volume"), -0.5F);
    EXPECT_FLOAT_EQ(start().volume, 0.8F);
}

TEST_F(RadioPlayerStartTest, enablesTheThreeRemoteCommands) {
    start();
    EXPECT_TRUE(commands.togglePlayPause);
    EXPECT_TRUE(commands.play);
    EXPECT_TRUE(commands.pause);
}

class RadioPlayerVolumeTest : public RadioPlayerTest {};

TEST_F(RadioPlayerVolumeTest, isKeptShownAndGivenToTheStream) {
    auto& player = startPlaying();
    player.applyVolume(0.5F);
    EXPECT_FLOAT_EQ(player.volume, 0.5F);
    EXPECT_FLOAT_EQ(players.current()->volume.value_or(-1), 0.5F);
    EXPECT_FLOAT_EQ(defaults.floatValue(QStringLiteral("zofra_radio_volume")).value_or(-1), 0.5F);
    EXPECT_THAT(defaults.writes, ElementsAre(QStringLiteral("zofra_radio_volume")));
    EXPECT_THAT(states, IsEmpty());
}

TEST_F(RadioPlayerVolumeTest, isKeptWithoutAStream) {
    auto& player = start();
    player.applyVolume(0.25F);
    EXPECT_FLOAT_EQ(player.volume, 0.25F);
    EXPECT_THAT(defaults.writes, ElementsAre(QStringLiteral("zofra_radio_volume")));
    EXPECT_THAT(players.calls, IsEmpty());
    player.play();
    EXPECT_FLOAT_EQ(players.current()->volume.value_or(-1), 0.25F);
}

TEST_F(RadioPlayerVolumeTest, staysBetweenSilenceAndFull) {
    auto& player = start();
    player.applyVolume(1.5F);
    EXPECT_EQ(player.volume.get(), 1.0F);
    player.applyVolume(-0.1F);
    EXPECT_EQ(player.volume.get(), 0.0F);
    player.applyVolume(std::numeric_limits<float>::infinity());
    EXPECT_EQ(player.volume.get(), 1.0F);
    player.applyVolume(-std::numeric_limits<float>::infinity());
    EXPECT_EQ(player.volume.get(), 0.0F);
}

TEST_F(RadioPlayerVolumeTest, becomesFullWhenItIsNoNumber) {
    auto& player = start();
    player.applyVolume(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(player.volume.get(), 1.0F);
}

TEST_F(RadioPlayerVolumeTest, ofZeroIsKeptButComesBackAtFourFifths) {
    start().applyVolume(0.0F);
    EXPECT_EQ(defaults.floatValue(QStringLiteral("zofra_radio_volume")), 0.0F);
    EXPECT_FLOAT_EQ(start().volume, 0.8F);
}

} // namespace
} // namespace zofra::test
