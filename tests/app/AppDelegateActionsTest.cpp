// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VolumePercent.h"
#include "tests/app/DelegateTest.h"

#include <array>
#include <cmath>
#include <limits>

namespace zofra::test {
namespace {

class AppDelegateActionsTest : public DelegateTest {
protected:
    /// Finds rooms as a search does, so that their players can be sent commands.
    void useRooms(const QList<SonosRoom>& rooms) { sonos->rooms = rooms; }
    static MenuItem carrying(std::any value) {
        MenuItem item;
        item.representedObject = std::move(value);
        return item;
    }
    [[nodiscard]] QStringList bodiesWith(const QByteArray& text) const {
        QStringList addresses;
        for (const HttpRequest& request : http.requests) {
            if (request.body.contains(text))
                addresses << request.url.host();
        }
        return addresses;
    }
    SonosRoom kitchen = room(u"RINCON_K"_qs, u"Kitchen"_qs, 5);
};

TEST_F(AppDelegateActionsTest, ToggleAsksTheSpeakerManagerAndRedraws) {
    launch();
    delegate->togglePlayRadio();
    EXPECT_TRUE(player->isPlaying);
    EXPECT_EQ(item().symbol, u"speaker.wave.2.fill"_qs);
    delegate->togglePlayRadio();
    EXPECT_FALSE(player->isPlaying);
    EXPECT_EQ(item().symbol, u"play.fill"_qs);
}

TEST_F(AppDelegateActionsTest, AStationGoesToPlayerSpeakersModelAndButtonInThisOrder) {
    launch();
    QStringList order;
    const auto a = player->observe([&] { order << u"player"_qs; });
    const auto b = sonos->observe([&] { order << u"sonos"_qs; });
    const auto c = delegate->viewModel().observe([&] { order << u"model"_qs; });
    record.clear();
    delegate->selectStationFromMenuItem(carrying(RadioStation(RadioStation::qmusic)));
    order.removeDuplicates();
    EXPECT_EQ(order, (QStringList{u"player"_qs, u"sonos"_qs, u"model"_qs}));
    EXPECT_EQ(record.last(), u"setToolTip"_qs);
    EXPECT_EQ(defaults.values[u"zofra_selected_station"_qs].toString(), u"qmusic"_qs);
}

TEST_F(AppDelegateActionsTest, AnItemWithTheWrongObjectChangesNothing) {
    launch();
    useRooms({kitchen});
    const auto writes = defaults.writes.size();
    const std::array<std::any, 6> wrong{std::any(),    std::any(u"qmusic"_qs), std::any(1),
                                        std::any(0.5), std::any(true),         std::any(&kitchen)};
    for (const std::any& value : wrong) {
        delegate->selectStationFromMenuItem(carrying(value));
        delegate->selectOutputSonos(carrying(value));
        delegate->setVolumeFromMenuItem(carrying(value));
    }
    delegate->selectStationFromMenuItem(carrying(kitchen));
    delegate->selectStationFromMenuItem(carrying(0.5F));
    delegate->selectOutputSonos(carrying(RadioStation(RadioStation::joe)));
    delegate->selectOutputSonos(carrying(0.5F));
    delegate->setVolumeFromMenuItem(carrying(RadioStation(RadioStation::joe)));
    delegate->setVolumeFromMenuItem(carrying(kitchen));
    queue.drain();
    EXPECT_EQ(record, QStringList());
    EXPECT_EQ(defaults.writes.size(), writes);
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::localMac());
}

TEST_F(AppDelegateActionsTest, ThisComputerStopsTheSpeakersAndLeavesTheLocalPlayerStopped) {
    launch();
    sonos->activeTarget = AudioOutputTarget::sonosEverywhere();
    sonos->isSonosPlaying = true;
    QStringList order;
    bool told = true;
    sonos->onPlaybackStateChanged = [&](bool playing) {
        told = playing;
        order << (sonos->isSonosPlaying ? u"told while playing"_qs : u"told"_qs);
    };
    delegate->selectOutputMac();
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::localMac());
    EXPECT_FALSE(sonos->isSonosPlaying);
    EXPECT_EQ(order, QStringList{u"told"_qs});
    EXPECT_FALSE(told);
    EXPECT_FALSE(player->isPlaying);
    EXPECT_TRUE(players.urls().empty());
    EXPECT_EQ(record.last(), u"setToolTip"_qs);
    sonos->onPlaybackStateChanged = nullptr;
    delegate->selectOutputMac();
}

TEST_F(AppDelegateActionsTest, ARoomSilencesTheLocalPlayerBeforeItStarts) {
    launch();
    useRooms({kitchen});
    delegate->togglePlayRadio();
    ASSERT_TRUE(player->isPlaying);
    player->isBuffering = true;
    std::vector<bool> told;
    player->onPlaybackStateChanged = [&](bool playing) { told.push_back(playing); };
    record.clear();
    delegate->selectOutputSonos(carrying(kitchen));
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::sonos(u"RINCON_K"_qs));
    EXPECT_FALSE(player->isPlaying);
    EXPECT_FALSE(player->isBuffering);
    EXPECT_EQ(told, std::vector<bool>{false});
    EXPECT_EQ(recorded({u"1 pause"_qs, u"POST"_qs}),
              (QStringList{u"1 pause"_qs, u"POST SetAVTransportURI 10.0.0.5"_qs}));
    EXPECT_EQ(record.last(), u"setToolTip"_qs);
}

TEST_F(AppDelegateActionsTest, EverywhereIsChosenThroughTheManager) {
    launch();
    delegate->selectOutputEverywhere();
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::sonosEverywhere());
    EXPECT_EQ(record.last(), u"setToolTip"_qs);
    EXPECT_TRUE(item().toolTip.contains(u"Output: Everywhere (All Rooms)"_qs));
}

TEST_F(AppDelegateActionsTest, RescanSearchesWithTheSubnetScan) {
    launch();
    network.addInterface(u"eth0"_qs, u"10.0.0.2"_qs, u"10.0.0.255"_qs);
    delegate->rescanSonos();
    EXPECT_TRUE(sonos->isScanning);
    EXPECT_GT(tasks.waiting(), 0U);
}

TEST_F(AppDelegateActionsTest, LocalNetworkSettingsAreOpenedByTheirAddress) {
    launch();
    delegate->openLocalNetworkSettings();
    ASSERT_EQ(workspace.opened.size(), 1U);
    EXPECT_EQ(workspace.opened.front().toString(),
              u"x-apple.systempreferences:com.apple.preference.security?Privacy_LocalNetwork"_qs);
}

TEST_F(AppDelegateActionsTest, AVolumeIsSetSentToThePlayerAndKept) {
    launch();
    delegate->togglePlayRadio();
    delegate->setVolumeFromMenuItem(carrying(0.25F));
    EXPECT_EQ(player->volume.get(), 0.25F);
    EXPECT_EQ(players.current()->volume, 0.25F);
    EXPECT_EQ(defaults.values[u"zofra_radio_volume"_qs].toFloat(), 0.25F);
    EXPECT_TRUE(bodiesWith("SetVolume").isEmpty()) << "this computer: nothing is sent";
}

TEST_F(AppDelegateActionsTest, OneIsExactlyOneAndAHundredZeroIsZero) {
    launch();
    useRooms({kitchen});
    sonos->activeTarget = AudioOutputTarget::sonos(u"RINCON_K"_qs);
    delegate->setVolumeFromMenuItem(carrying(1.0F));
    EXPECT_EQ(player->volume.get(), 1.0F);
    EXPECT_EQ(bodiesWith("<DesiredVolume>100</DesiredVolume>"), QStringList{u"10.0.0.5"_qs});
    // A player is told one volume at a time.
    http.open.back().completion(HttpResponse{200, {}});
    queue.drain();
    delegate->setVolumeFromMenuItem(carrying(0.0F));
    EXPECT_EQ(player->volume.get(), 0.0F);
    EXPECT_EQ(bodiesWith("<DesiredVolume>0</DesiredVolume>"), QStringList{u"10.0.0.5"_qs});
}

TEST_F(AppDelegateActionsTest, LocalVolumeIsClampedThePercentageIsOfTheUnclampedValue) {
    launch();
    useRooms({kitchen});
    sonos->activeTarget = AudioOutputTarget::sonos(u"RINCON_K"_qs);
    delegate->setVolumeFromMenuItem(carrying(1.5F));
    EXPECT_EQ(player->volume.get(), 1.0F);
    // The manager clamps what it is given: 150 goes out as 100.
    EXPECT_EQ(bodiesWith("<DesiredVolume>100</DesiredVolume>"), QStringList{u"10.0.0.5"_qs});
    delegate->setVolumeFromMenuItem(carrying(-0.5F));
    EXPECT_EQ(player->volume.get(), 0.0F);
}

TEST_F(AppDelegateActionsTest, AVolumeForARoomThatIsGoneIsOnlyLocal) {
    launch();
    sonos->activeTarget = AudioOutputTarget::sonos(u"RINCON_GONE"_qs);
    record.clear();
    delegate->setVolumeFromMenuItem(carrying(0.75F));
    EXPECT_EQ(player->volume.get(), 0.75F);
    EXPECT_EQ(recorded({u"POST"_qs}), QStringList());
}

using AppDelegateActionsDeathTest = AppDelegateActionsTest;

TEST_F(AppDelegateActionsDeathTest, AVolumeWithoutPercentageEndsTheProgram) {
    launch();
    EXPECT_DEATH(delegate->setVolumeFromMenuItem(carrying(std::numeric_limits<float>::quiet_NaN())),
                 "no percentage");
    EXPECT_DEATH(delegate->setVolumeFromMenuItem(carrying(std::numeric_limits<float>::infinity())),
                 "no percentage");
    EXPECT_DEATH(delegate->setVolumeFromMenuItem(carrying(1e30F)), "no percentage");
}

TEST_F(AppDelegateActionsTest, VolumesFromOutsideAreMadeSafeFirst) {
    launch();
    delegate->controls().requestVolume(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(player->volume.get(), 0.8F);
    delegate->controls().requestVolume(std::numeric_limits<double>::infinity());
    EXPECT_EQ(player->volume.get(), 1.0F);
    delegate->controls().requestVolume(-7.0);
    EXPECT_EQ(player->volume.get(), 0.0F);
    delegate->controls().requestVolume(0.3F);
    EXPECT_EQ(player->volume.get(), 0.3F);
}

TEST_F(AppDelegateActionsTest, TheWheelMovesByFivePercentAndShowsIt) {
    launch();
    delegate->scrollVolume(1);
    EXPECT_EQ(player->volume.get(), 0.85F);
    EXPECT_EQ(recorded({u"flash"_qs}), QStringList{u"flash Volume (85 %)"_qs});
    delegate->scrollVolume(-2);
    EXPECT_EQ(player->volume.get(), 0.75F);
    delegate->scrollVolume(100);
    EXPECT_EQ(player->volume.get(), 1.0F);
    delegate->scrollVolume(std::numeric_limits<int>::min());
    EXPECT_EQ(player->volume.get(), 0.0F);
    // Up and down again meets the same steps, whatever fractions 32 bits make of them.
    for (int percent = 5; percent <= 100; percent += 5) {
        delegate->scrollVolume(1);
        EXPECT_EQ(record.last(), u"flash Volume (%1 %)"_qs.arg(percent));
    }
    delegate->scrollVolume(-20);
    languages->setCurrentLanguage(AppLanguage::de);
    delegate->scrollVolume(1);
    EXPECT_EQ(record.last(), u"flash Lautstärke (5 %)"_qs);
}

TEST_F(AppDelegateActionsTest, TheWheelReachesTheRoom) {
    launch();
    useRooms({kitchen});
    sonos->activeTarget = AudioOutputTarget::sonos(u"RINCON_K"_qs);
    delegate->scrollVolume(-1);
    EXPECT_EQ(bodiesWith("<DesiredVolume>75</DesiredVolume>"), QStringList{u"10.0.0.5"_qs});
}

TEST(VolumePercentTest, IsComputedIn32BitsAndCut) {
    EXPECT_EQ(volumePercent(0.29F), 29);
    EXPECT_EQ(volumePercent(0.62F), 62);
    EXPECT_EQ(volumePercent(0.999F), 99);
    EXPECT_EQ(volumePercent(-0.015F), -1);
    EXPECT_EQ(volumePercent(1.5F), 150);
    EXPECT_EQ(volumePercent(std::numeric_limits<float>::quiet_NaN()), std::nullopt);
    EXPECT_EQ(volumePercent(-std::numeric_limits<float>::infinity()), std::nullopt);
    EXPECT_EQ(volumePercent(2.2e7F), std::nullopt);
}

TEST(VolumePercentTest, EveryPercentageIsItsOwn) {
    for (int percent = 0; percent <= 100; ++percent)
        EXPECT_EQ(volumePercent(volumeOfPercent(percent)), percent);
}

TEST(VolumePercentTest, WhatIsShownLiesBetween0And100) {
    EXPECT_EQ(shownVolumePercent(0.5F), 50);
    EXPECT_EQ(shownVolumePercent(7.0F), 100);
    EXPECT_EQ(shownVolumePercent(1e30F), 100);
    EXPECT_EQ(shownVolumePercent(-1.0F), 0);
}

} // namespace
} // namespace zofra::test
