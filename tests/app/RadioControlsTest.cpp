// SPDX-License-Identifier: GPL-3.0-or-later
// What every face of the program calls, over the real objects.
#include "app/RadioControls.h"

#include "tests/app/RadioWorld.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace zofra::test {
namespace {

class RadioControlsTest : public ::testing::Test {
protected:
    /// Notes each change of a field of the three, as "player", "sonos" or "viewModel", once in a row.
    void listen() {
        const auto note = [this](const QString& who) {
            return [this, who] {
                if (world.calls.isEmpty() || world.calls.last() != who)
                    world.calls << who;
            };
        };
        m_observations.push_back(world.player.observe(note(QStringLiteral("player"))));
        m_observations.push_back(world.sonos.observe(note(QStringLiteral("sonos"))));
        m_observations.push_back(world.viewModel.observe(note(QStringLiteral("viewModel"))));
    }

    void playLocally() {
        world.player.play();
        world.players.current()->setStatus(TimeControlStatus::playing);
        world.queue.drain();
        world.players.calls.clear();
    }

    RadioWorld world;
    RadioControls& controls = world.controls;

private:
    std::vector<ObservationToken> m_observations;
};

TEST_F(RadioControlsTest, ChoosingAStationTellsPlayerThenSpeakersThenMetadataThenTheButton) {
    listen();
    controls.chooseStation(RadioStation::joe);
    EXPECT_EQ(world.calls,
              (QStringList{u"player"_qs, u"sonos"_qs, u"viewModel"_qs, u"updateStatusBarButton"_qs}));
    EXPECT_EQ(world.player.currentStation.get(), RadioStation::joe);
    EXPECT_EQ(world.sonos.currentStation.get(), RadioStation::joe);
    EXPECT_EQ(world.viewModel.currentStation.get(), RadioStation::joe);
}

TEST_F(RadioControlsTest, ChoosingTheCurrentStationOnlyRedrawsTheButton) {
    listen();
    controls.chooseStation(RadioStation::qmusic);
    EXPECT_EQ(world.calls, QStringList{u"updateStatusBarButton"_qs});
}

TEST_F(RadioControlsTest, ChoosingALanguageKeepsItAndTellsTheShell) {
    world.languages.onLanguageChanged = [this] { world.calls << u"languageChanged"_qs; };
    controls.chooseLanguage(AppLanguage::fr);
    EXPECT_EQ(world.languages.currentLanguage(), AppLanguage::fr);
    EXPECT_EQ(world.defaults.values.value(u"app_language"_qs).toString(), u"fr"_qs);
    EXPECT_EQ(world.calls, QStringList{u"languageChanged"_qs});
}

TEST_F(RadioControlsTest, ChoosingThisMacStopsThePlayersAndSaysSo) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    ASSERT_EQ(world.sonos.rooms.get().size(), 1);
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    world.sonos.isSonosPlaying = true;
    world.sonos.onPlaybackStateChanged = [this](bool isPlaying) {
        EXPECT_FALSE(isPlaying);
        EXPECT_FALSE(world.sonos.isSonosPlaying);
        world.calls << QStringLiteral("told after ") + world.soapActions().join(QLatin1Char(','));
    };
    controls.chooseThisComputer();
    EXPECT_EQ(world.sonos.activeTarget.get(), AudioOutputTarget::localMac());
    EXPECT_FALSE(world.sonos.isSonosPlaying);
    EXPECT_EQ(world.calls, (QStringList{u"told after Stop"_qs, u"updateStatusBarButton"_qs}));
    // Local playback waits for the user.
    EXPECT_TRUE(world.players.calls.isEmpty());
    EXPECT_FALSE(world.player.isPlaying);
}

TEST_F(RadioControlsTest, ChoosingThisMacSetsTheTargetBeforeItStops) {
    world.sonos.activeTarget = AudioOutputTarget::sonosEverywhere();
    world.sonos.isSonosPlaying = true;
    QStringList seen;
    const auto token = world.sonos.observe([this, &seen] {
        seen << QStringLiteral("%1 %2")
                    .arg(world.sonos.activeTarget.get() == AudioOutputTarget::localMac() ? u"local"_qs
                                                                                         : u"everywhere"_qs)
                    .arg(world.sonos.isSonosPlaying.get() ? u"playing"_qs : u"still"_qs);
    });
    // No callback is installed: none is needed.
    controls.chooseThisComputer();
    EXPECT_EQ(seen, (QStringList{u"everywhere playing"_qs, u"local playing"_qs, u"local still"_qs}));
}

TEST_F(RadioControlsTest, ChoosingARoomPausesTheStreamBeforeTheRoomPlays) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    playLocally();
    world.players.calls.clear();
    world.players.onCall = [this] { EXPECT_TRUE(world.http.requests.empty()); };
    controls.chooseRoom(u"RINCON_1"_qs);
    world.players.onCall = nullptr;
    EXPECT_EQ(world.players.calls, QStringList{u"1 pause"_qs});
    EXPECT_FALSE(world.http.requests.empty());
}

TEST_F(RadioControlsTest, ChoosingARoomMakesItTheTargetAndStopsTheLocalPlayer) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    playLocally();
    std::optional<bool> told;
    world.player.onPlaybackStateChanged = [&told](bool isPlaying) { told = isPlaying; };
    controls.chooseRoom(u"RINCON_1"_qs);
    EXPECT_EQ(world.sonos.activeTarget.get(), AudioOutputTarget::sonos(u"RINCON_1"_qs));
    EXPECT_FALSE(world.player.isPlaying);
    EXPECT_EQ(told, false);
    EXPECT_NE(world.player.player, nullptr);
}

TEST_F(RadioControlsTest, ChoosingARoomBeforeAnythingPlayedHereOpensNoStream) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    controls.chooseRoom(u"RINCON_1"_qs);
    EXPECT_TRUE(world.players.calls.isEmpty());
    EXPECT_EQ(world.player.player, nullptr);
    EXPECT_FALSE(world.http.requests.empty());
}

TEST_F(RadioControlsTest, ChoosingARoomThatIsGonePlaysNothing) {
    controls.chooseRoom(u"RINCON_GONE"_qs);
    EXPECT_TRUE(world.http.requests.empty());
}

TEST_F(RadioControlsTest, ChoosingEverywhereSelectsThatTarget) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    playLocally();
    controls.chooseEverywhere();
    EXPECT_EQ(world.sonos.activeTarget.get(), AudioOutputTarget::sonosEverywhere());
    EXPECT_FALSE(world.player.isPlaying);
    EXPECT_FALSE(world.http.requests.empty());
}

TEST_F(RadioControlsTest, SearchingAlsoProbesTheSubnet) {
    world.network.addInterface(u"eth0"_qs, u"192.0.2.5"_qs, u"192.0.2.255"_qs);
    world.http.automatic = [](const HttpRequest&) {
        return HttpResult(failure(HttpError{HttpError::Code::timedOut, 0, u"no answer"_qs}));
    };
    controls.search();
    EXPECT_GE(world.http.requests.size(), 253U);
}

TEST_F(RadioControlsTest, LocalNetworkSettingsAreOpenedByTheirAddress) {
    controls.openLocalNetworkSettings();
    ASSERT_EQ(world.workspace.opened.size(), 1U);
    EXPECT_EQ(world.workspace.opened[0].toString(),
              u"x-apple.systempreferences:com.apple.preference.security?Privacy_LocalNetwork"_qs);
}

TEST_F(RadioControlsTest, PlayAndStopAreRoutedToTheTarget) {
    controls.toggle();
    EXPECT_TRUE(world.player.isPlaying);
    controls.toggle();
    EXPECT_FALSE(world.player.isPlaying);
    EXPECT_TRUE(world.http.requests.empty());

    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    world.sonos.isSonosPlaying = true;
    controls.toggle();
    EXPECT_EQ(world.soapActions(), QStringList{u"Pause"_qs});
    EXPECT_FALSE(world.player.isPlaying);
}

TEST_F(RadioControlsTest, AVolumeForThisComputerIsSetAndKeptAndSentNowhere) {
    playLocally();
    controls.setVolume(0.35F);
    EXPECT_EQ(world.player.volume.get(), 0.35F);
    EXPECT_EQ(world.players.current()->volume, 0.35F);
    EXPECT_EQ(world.defaults.values.value(u"zofra_radio_volume"_qs).toFloat(), 0.35F);
    EXPECT_TRUE(world.http.requests.empty());
}

TEST_F(RadioControlsTest, FullVolumeIsExactlyOneAndAHundredForARoom) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    controls.setVolume(1.0F);
    EXPECT_EQ(world.player.volume.get(), 1.0F);
    EXPECT_EQ(world.soapActions(), QStringList{u"SetVolume 100"_qs});
}

TEST_F(RadioControlsTest, SilenceIsExactlyZeroEverywhere) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    world.sonos.activeTarget = AudioOutputTarget::sonosEverywhere();
    controls.setVolume(0.0F);
    EXPECT_EQ(world.player.volume.get(), 0.0F);
    EXPECT_EQ(world.soapActions(), QStringList{u"SetVolume 0"_qs});
}

TEST_F(RadioControlsTest, AVolumeForARoomThatIsGoneIsSentNowhere) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_GONE"_qs);
    controls.setVolume(0.5F);
    EXPECT_EQ(world.player.volume.get(), 0.5F);
    EXPECT_TRUE(world.http.requests.empty());
}

TEST_F(RadioControlsTest, VolumesBeyondTheEndsAreClampedHereAndPercentagesComeFromWhatWasGiven) {
    controls.setVolume(1.5F);
    EXPECT_EQ(world.player.volume.get(), 1.0F);
    controls.setVolume(-0.5F);
    EXPECT_EQ(world.player.volume.get(), 0.0F);
    controls.setVolume(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(world.player.volume.get(), 1.0F);
}

} // namespace
} // namespace zofra::test
