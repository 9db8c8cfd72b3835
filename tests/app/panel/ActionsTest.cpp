// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelActions.h"
#include "tests/app/panel/PanelWorld.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace zofra::test {
namespace {

class PanelActionsTest : public ::testing::Test {
protected:
    PanelActionsTest()
        : content{QStringLiteral("1.0 (Build 1)"),
                  world.viewModel,
                  [this] { world.calls << QStringLiteral("close"); },
                  world.player,
                  world.sonos,
                  world.languages,
                  world.controls}
        , actions(content, world.loginItem, world.output, world.workspace) {}

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
        world.streams.current()->setStatus(TimeControlStatus::playing);
        world.queue.drain();
        world.streams.calls.clear();
    }

    PanelWorld world;
    PopupPanelContent content;
    PanelActions actions;

private:
    std::vector<ObservationToken> m_observations;
};

TEST_F(PanelActionsTest, AskWhoeverMakesTheSoundWhetherItPlays) {
    EXPECT_FALSE(actions.isPlaying());
    world.player.isPlaying = true;
    EXPECT_TRUE(actions.isPlaying());
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    EXPECT_FALSE(actions.isPlaying());
    world.sonos.isSonosPlaying = true;
    world.player.isPlaying = false;
    EXPECT_TRUE(actions.isPlaying());
    world.sonos.activeTarget = AudioOutputTarget::sonosEverywhere();
    EXPECT_TRUE(actions.isPlaying());
    world.sonos.activeTarget = AudioOutputTarget::localMac();
    EXPECT_FALSE(actions.isPlaying());
}

TEST_F(PanelActionsTest, ChoosingAStationTellsPlayerThenSpeakersThenMetadataThenTheButton) {
    listen();
    actions.chooseStation(RadioStation::joe);
    EXPECT_EQ(world.calls,
              (QStringList{u"player"_qs, u"sonos"_qs, u"viewModel"_qs, u"updateStatusBarButton"_qs}));
    EXPECT_EQ(world.player.currentStation.get(), RadioStation::joe);
    EXPECT_EQ(world.sonos.currentStation.get(), RadioStation::joe);
    EXPECT_EQ(world.viewModel.currentStation.get(), RadioStation::joe);
}

TEST_F(PanelActionsTest, ChoosingTheCurrentStationOnlyRedrawsTheButton) {
    listen();
    actions.chooseStation(RadioStation::qmusic);
    EXPECT_EQ(world.calls, QStringList{u"updateStatusBarButton"_qs});
}

TEST_F(PanelActionsTest, ChoosingALanguageKeepsItAndTellsTheShell) {
    world.languages.onLanguageChanged = [this] { world.calls << u"languageChanged"_qs; };
    actions.chooseLanguage(AppLanguage::fr);
    EXPECT_EQ(world.languages.currentLanguage(), AppLanguage::fr);
    EXPECT_EQ(world.defaults.values.value(u"app_language"_qs).toString(), u"fr"_qs);
    EXPECT_EQ(world.calls, QStringList{u"languageChanged"_qs});
}

TEST_F(PanelActionsTest, ChoosingThisMacStopsThePlayersAndSaysSo) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    ASSERT_EQ(world.sonos.rooms.get().size(), 1);
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    world.sonos.isSonosPlaying = true;
    world.sonos.onPlaybackStateChanged = [this](bool isPlaying) {
        EXPECT_FALSE(isPlaying);
        EXPECT_FALSE(world.sonos.isSonosPlaying);
        world.calls << QStringLiteral("told after ") + world.soapActions().join(QLatin1Char(','));
    };
    actions.chooseThisMac();
    EXPECT_EQ(world.sonos.activeTarget.get(), AudioOutputTarget::localMac());
    EXPECT_FALSE(world.sonos.isSonosPlaying);
    EXPECT_EQ(world.calls, (QStringList{u"told after Stop"_qs, u"updateStatusBarButton"_qs}));
    // Local playback waits for the user.
    EXPECT_TRUE(world.streams.calls.isEmpty());
    EXPECT_FALSE(world.player.isPlaying);
}

TEST_F(PanelActionsTest, ChoosingThisMacSetsTheTargetBeforeItStops) {
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
    actions.chooseThisMac();
    EXPECT_EQ(seen, (QStringList{u"everywhere playing"_qs, u"local playing"_qs, u"local still"_qs}));
}

TEST_F(PanelActionsTest, ChoosingARoomPausesTheStreamBeforeTheRoomPlays) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    playLocally();
    world.streams.calls.clear();
    world.streams.onCall = [this] { EXPECT_TRUE(world.http.requests.empty()); };
    actions.chooseRoom(u"RINCON_1"_qs);
    world.streams.onCall = nullptr;
    EXPECT_EQ(world.streams.calls, QStringList{u"1 pause"_qs});
    EXPECT_FALSE(world.http.requests.empty());
}

TEST_F(PanelActionsTest, ChoosingARoomMakesItTheTargetAndStopsTheLocalPlayer) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    playLocally();
    std::optional<bool> told;
    world.player.onPlaybackStateChanged = [&told](bool isPlaying) { told = isPlaying; };
    actions.chooseRoom(u"RINCON_1"_qs);
    EXPECT_EQ(world.sonos.activeTarget.get(), AudioOutputTarget::sonos(u"RINCON_1"_qs));
    EXPECT_FALSE(world.player.isPlaying);
    EXPECT_EQ(told, false);
    EXPECT_NE(world.player.player, nullptr);
}

TEST_F(PanelActionsTest, ChoosingARoomBeforeAnythingPlayedHereOpensNoStream) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    actions.chooseRoom(u"RINCON_1"_qs);
    EXPECT_TRUE(world.streams.calls.isEmpty());
    EXPECT_EQ(world.player.player, nullptr);
    EXPECT_FALSE(world.http.requests.empty());
}

TEST_F(PanelActionsTest, ChoosingARoomThatIsGonePlaysNothing) {
    actions.chooseRoom(u"RINCON_GONE"_qs);
    EXPECT_TRUE(world.http.requests.empty());
}

TEST_F(PanelActionsTest, ChoosingEverywhereSelectsThatTarget) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    playLocally();
    actions.chooseEverywhere();
    EXPECT_EQ(world.sonos.activeTarget.get(), AudioOutputTarget::sonosEverywhere());
    EXPECT_FALSE(world.player.isPlaying);
    EXPECT_FALSE(world.http.requests.empty());
}

TEST_F(PanelActionsTest, SearchingAlsoProbesTheSubnet) {
    world.network.addInterface(u"eth0"_qs, u"192.0.2.5"_qs, u"192.0.2.255"_qs);
    world.http.automatic = [](const HttpRequest&) {
        return HttpResult{std::nullopt, HttpError{HttpError::Code::timedOut, 0, u"no answer"_qs}};
    };
    actions.search();
    EXPECT_GE(world.http.requests.size(), 253U);
}

TEST_F(PanelActionsTest, LocalNetworkSettingsAreOpenedByTheirAddress) {
    actions.openLocalNetworkSettings();
    ASSERT_EQ(world.workspace.opened.size(), 1U);
    EXPECT_EQ(world.workspace.opened[0].toString(),
              u"x-apple.systempreferences:com.apple.preference.security?Privacy_LocalNetwork"_qs);
}

TEST_F(PanelActionsTest, WritingToUsOpensAMail) {
    actions.writeToUs();
    ASSERT_EQ(world.workspace.opened.size(), 1U);
    EXPECT_EQ(world.workspace.opened[0].scheme(), u"mailto"_qs);
}

TEST_F(PanelActionsTest, PlayAndStopAreRoutedToTheTarget) {
    actions.togglePlayPause();
    EXPECT_TRUE(world.player.isPlaying);
    actions.togglePlayPause();
    EXPECT_FALSE(world.player.isPlaying);
    EXPECT_TRUE(world.http.requests.empty());

    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    world.sonos.isSonosPlaying = true;
    actions.togglePlayPause();
    EXPECT_EQ(world.soapActions(), QStringList{u"Pause"_qs});
    EXPECT_FALSE(world.player.isPlaying);
}

TEST_F(PanelActionsTest, AVolumeForThisComputerIsSetAndKeptAndSentNowhere) {
    playLocally();
    actions.setVolume(0.35F);
    EXPECT_EQ(world.player.volume.get(), 0.35F);
    EXPECT_EQ(world.streams.current()->volume, 0.35F);
    EXPECT_EQ(world.defaults.values.value(u"zofra_radio_volume"_qs).toFloat(), 0.35F);
    EXPECT_TRUE(world.http.requests.empty());
}

TEST_F(PanelActionsTest, FullVolumeIsExactlyOneAndAHundredForARoom) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    actions.setVolume(1.0F);
    EXPECT_EQ(world.player.volume.get(), 1.0F);
    EXPECT_EQ(world.soapActions(), QStringList{u"SetVolume 100"_qs});
}

TEST_F(PanelActionsTest, SilenceIsExactlyZeroEverywhere) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    world.sonos.activeTarget = AudioOutputTarget::sonosEverywhere();
    actions.setVolume(0.0F);
    EXPECT_EQ(world.player.volume.get(), 0.0F);
    EXPECT_EQ(world.soapActions(), QStringList{u"SetVolume 0"_qs});
}

TEST_F(PanelActionsTest, AVolumeForARoomThatIsGoneIsSentNowhere) {
    world.findPlayer(u"RINCON_1"_qs, u"Kitchen"_qs);
    world.sonos.activeTarget = AudioOutputTarget::sonos(u"RINCON_GONE"_qs);
    actions.setVolume(0.5F);
    EXPECT_EQ(world.player.volume.get(), 0.5F);
    EXPECT_TRUE(world.http.requests.empty());
}

TEST_F(PanelActionsTest, VolumesBeyondTheEndsAreClampedHereAndPercentagesComeFromWhatWasGiven) {
    actions.setVolume(1.5F);
    EXPECT_EQ(world.player.volume.get(), 1.0F);
    actions.setVolume(-0.5F);
    EXPECT_EQ(world.player.volume.get(), 0.0F);
    actions.setVolume(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(world.player.volume.get(), 1.0F);
    EXPECT_EQ(shownPercent(1.5F), 150);
    EXPECT_EQ(shownPercent(-0.5F), -50);
}

TEST(ShownPercent, IsComputedInThirtyTwoBitsAndCut) {
    EXPECT_EQ(shownPercent(0.8F), 80);
    EXPECT_EQ(shownPercent(0.29F), 29);
    EXPECT_EQ(shownPercent(0.625F), 62);
    EXPECT_EQ(shownPercent(0.999F), 99);
    EXPECT_EQ(shownPercent(std::numeric_limits<float>::quiet_NaN()), std::nullopt);
    EXPECT_EQ(shownPercent(std::numeric_limits<float>::infinity()), std::nullopt);
    EXPECT_EQ(shownPercent(3e7F), std::nullopt);
}

TEST_F(PanelActionsTest, ClosingAsksTheHost) {
    actions.close();
    EXPECT_EQ(world.calls, QStringList{u"close"_qs});
}

TEST_F(PanelActionsTest, TurningTheLoginItemOnRegistersItUnlessItIsRegistered) {
    actions.updateLaunchAtLogin(true);
    EXPECT_EQ(world.loginItem.calls, QStringList{u"register"_qs});
    actions.updateLaunchAtLogin(true);
    EXPECT_EQ(world.loginItem.calls, QStringList{u"register"_qs});
    EXPECT_TRUE(world.output.lines.empty());
}

TEST_F(PanelActionsTest, TurningTheLoginItemOffUnregistersItUnlessItIsNotRegistered) {
    actions.updateLaunchAtLogin(false);
    EXPECT_TRUE(world.loginItem.calls.isEmpty());
    world.loginItem.enabled = true;
    actions.updateLaunchAtLogin(false);
    EXPECT_EQ(world.loginItem.calls, QStringList{u"unregister"_qs});
    EXPECT_TRUE(world.output.lines.empty());
}

TEST_F(PanelActionsTest, AFailureOfTheLoginItemIsOneLine) {
    world.loginItem.failure = u"disk full"_qs;
    actions.updateLaunchAtLogin(true);
    ASSERT_EQ(world.output.lines.size(), 1U);
    EXPECT_EQ(world.output.lines[0], u"Error changing launch at login status: disk full"_qs);
}

} // namespace
} // namespace zofra::test
