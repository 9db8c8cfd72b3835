// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CommandRunner.h"

#include "app/VolumePercent.h"
#include "tests/app/DelegateTest.h"

namespace zofra::test {
namespace {

class CommandRunnerTest : public DelegateTest {
protected:
    void SetUp() override {
        launch();
        runner = std::make_unique<CommandRunner>(
            CommandRunner::Environment{delegate->controls(), delegate->state(), queue});
    }
    static Options play(std::optional<RadioStation> station = std::nullopt) {
        Options options;
        options.playback = Options::Playback::play;
        options.station = station;
        return options;
    }
    static Options output(const QString& name) {
        Options options;
        options.output = name;
        return options;
    }
    void runAtStart(const Options& options) {
        runner->runAtStart(options, [this](const QString& line) { reports << line; });
    }

    std::unique_ptr<CommandRunner> runner;
    QStringList reports;
    SonosRoom kitchen = room(u"RINCON_K"_qs, u"Kitchen"_qs, 5);
};

TEST_F(CommandRunnerTest, NothingAskedShowsTheWindow) {
    EXPECT_EQ(runner->run({}), std::nullopt);
    queue.drain();
    EXPECT_EQ(windows.made, 1);
}

TEST_F(CommandRunnerTest, PlayStartsButNeverStops) {
    EXPECT_EQ(runner->run(play()), std::nullopt);
    EXPECT_TRUE(player->isPlaying);
    EXPECT_EQ(runner->run(play()), std::nullopt);
    EXPECT_TRUE(player->isPlaying);
    EXPECT_EQ(runner->run(play(RadioStation::joe)), std::nullopt);
    EXPECT_EQ(player->currentStation.get(), RadioStation(RadioStation::joe));
    EXPECT_TRUE(player->isPlaying);
    queue.drain();
    EXPECT_EQ(windows.made, 0);
}

TEST_F(CommandRunnerTest, AStationIsChosenBeforeItIsPlayed) {
    EXPECT_EQ(runner->run(play(RadioStation::qmusic)), std::nullopt);
    EXPECT_EQ(players.urls(), std::vector<QUrl>{RadioStation(RadioStation::qmusic).streamAAC(hosts)});
}

TEST_F(CommandRunnerTest, ANamedStationIsHeardAlsoWhenAnotherOneIsHeld) {
    EXPECT_EQ(runner->run(play(RadioStation::zofra)), std::nullopt);
    player->stop();
    player->setStation(RadioStation::qmusic);
    EXPECT_EQ(runner->run(play(RadioStation::qmusic)), std::nullopt);
    EXPECT_TRUE(player->isPlaying);
    EXPECT_EQ(players.urls().back(), RadioStation(RadioStation::qmusic).streamAAC(hosts));
    player->stop();
    EXPECT_EQ(runner->run(play(RadioStation::joe)), std::nullopt);
    EXPECT_EQ(players.urls().back(), RadioStation(RadioStation::joe).streamAAC(hosts));
}

TEST_F(CommandRunnerTest, WithoutANameAHeldStreamGoesOnAsItIs) {
    EXPECT_EQ(runner->run(play(RadioStation::zofra)), std::nullopt);
    player->stop();
    EXPECT_EQ(runner->run(play()), std::nullopt);
    EXPECT_EQ(players.urls().size(), 1U);
    EXPECT_TRUE(player->isPlaying);
}

TEST_F(CommandRunnerTest, ARoomIsKnownByIdOrTitle) {
    sonos->rooms = QList<SonosRoom>{kitchen};
    for (const QString& name : {u"RINCON_K"_qs, u"Kitchen"_qs, u"kitchen"_qs}) {
        sonos->activeTarget = AudioOutputTarget::localMac();
        EXPECT_EQ(runner->run(output(name)), std::nullopt);
        EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::sonos(u"RINCON_K"_qs));
    }
    EXPECT_EQ(runner->run(output(u"Attic"_qs)), u"--output: there is no room \"Attic\""_qs);
}

TEST_F(CommandRunnerTest, AnUnknownRoomLeavesTheRestUndone) {
    Options options = output(u"Attic"_qs);
    options.playback = Options::Playback::play;
    options.station = RadioStation::joe;
    EXPECT_NE(runner->run(options), std::nullopt);
    EXPECT_EQ(player->currentStation.get(), RadioStation(RadioStation::zofra));
    EXPECT_FALSE(player->isPlaying);
}

TEST_F(CommandRunnerTest, HereAndEverywhere) {
    EXPECT_EQ(runner->run(output(u"everywhere"_qs)), std::nullopt);
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::sonosEverywhere());
    EXPECT_EQ(runner->run(output(u"here"_qs)), std::nullopt);
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::localMac());
    EXPECT_FALSE(player->isPlaying);
    Options both = output(u"here"_qs);
    both.playback = Options::Playback::play;
    EXPECT_EQ(runner->run(both), std::nullopt);
    EXPECT_TRUE(player->isPlaying);
}

TEST_F(CommandRunnerTest, ARoomIsStartedOnlyOnce) {
    sonos->rooms = QList<SonosRoom>{kitchen};
    Options options = output(u"Kitchen"_qs);
    options.playback = Options::Playback::play;
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_EQ(recorded({u"POST"_qs}), QStringList{u"POST SetAVTransportURI 10.0.0.5"_qs});
}

TEST_F(CommandRunnerTest, WhatBelongsToAFirstStartIsRefused) {
    Options options = play();
    options.headless = true;
    options.endpointsFile = u"x"_qs;
    const auto refusal = runner->run(options);
    ASSERT_TRUE(refusal);
    EXPECT_TRUE(refusal->startsWith(u"--endpoints, --headless"_qs)) << refusal->toStdString();
    EXPECT_FALSE(player->isPlaying);
}

TEST_F(CommandRunnerTest, AtTheStartARoomMayStillTurnUp) {
    runAtStart(output(u"Kitchen"_qs));
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::localMac());
    sonos->rooms = QList<SonosRoom>{room(u"RINCON_B"_qs, u"Bath"_qs, 6)};
    queue.drain();
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::localMac());
    sonos->rooms = QList<SonosRoom>{kitchen};
    queue.drain();
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::sonos(u"RINCON_K"_qs));
    queue.advance(std::chrono::minutes(1));
    EXPECT_EQ(reports, QStringList());
}

TEST_F(CommandRunnerTest, ARoomThatNeverTurnsUpIsToldOnce) {
    runAtStart(output(u"Kitchen"_qs));
    queue.advance(std::chrono::milliseconds(29999));
    EXPECT_EQ(reports, QStringList());
    queue.advance(std::chrono::milliseconds(1));
    EXPECT_EQ(reports, QStringList{u"--output: there is no room \"Kitchen\""_qs});
    sonos->rooms = QList<SonosRoom>{kitchen};
    queue.drain();
    EXPECT_EQ(sonos->activeTarget.get(), AudioOutputTarget::localMac()) << "too late";
}

TEST_F(CommandRunnerTest, WithoutDiscoveryNoRoomIsWaitedFor) {
    Options options = output(u"Kitchen"_qs);
    options.noDiscovery = true;
    runAtStart(options);
    EXPECT_EQ(reports.size(), 1);
    EXPECT_EQ(queue.pendingTimers(), 1U) << "only the poll";
}

TEST_F(CommandRunnerTest, AtTheStartNothingAskedShowsNothing) {
    Options options;
    options.headless = true;
    runAtStart(options);
    queue.drain();
    EXPECT_EQ(windows.made, 0);
    EXPECT_EQ(reports, QStringList());
}

TEST_F(CommandRunnerTest, StopAndToggleActWhereverTheSoundGoes) {
    Options options;
    options.playback = Options::Playback::toggle;
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_TRUE(player->isPlaying);
    options.playback = Options::Playback::stop;
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_FALSE(player->isPlaying);
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_FALSE(player->isPlaying) << "it never starts";
}

TEST_F(CommandRunnerTest, StationsGoRoundInTheirOrder) {
    Options options;
    options.stationStep = Options::StationStep::previous;
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_EQ(player->currentStation.get(), RadioStation(RadioStation::allCases.back()));
    options.stationStep = Options::StationStep::next;
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_EQ(player->currentStation.get(), RadioStation(RadioStation::zofra));
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_EQ(player->currentStation.get(), RadioStation(RadioStation::qmusic));
    EXPECT_FALSE(player->isPlaying);
}

TEST_F(CommandRunnerTest, AVolumeIsSetHereAndSentToTheRoom) {
    sonos->rooms = QList<SonosRoom>{kitchen};
    sonos->activeTarget = AudioOutputTarget::sonos(u"RINCON_K"_qs);
    Options options;
    options.volume = volumeNamed(u"53"_qs);
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_EQ(shownVolumePercent(player->volume), 53);
    EXPECT_EQ(recorded({u"POST"_qs}), QStringList{u"POST SetVolume 10.0.0.5"_qs});
    options.volume = volumeNamed(u"-60"_qs);
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_EQ(player->volume.get(), 0.0F);
    options.volume = volumeNamed(u"+7"_qs);
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_EQ(shownVolumePercent(player->volume), 7);
}

TEST_F(CommandRunnerTest, TheMusicStopsAfterAWhile) {
    EXPECT_EQ(runner->run(play()), std::nullopt);
    Options options;
    options.stopIn = std::chrono::minutes(30);
    EXPECT_EQ(runner->run(options), std::nullopt);
    EXPECT_EQ(delegate->state().now().stopsAt, queue.clock()() + std::chrono::minutes(30));
    queue.advance(std::chrono::minutes(29));
    EXPECT_TRUE(player->isPlaying);
    queue.advance(std::chrono::minutes(1));
    EXPECT_FALSE(player->isPlaying);
    EXPECT_EQ(delegate->state().now().stopsAt, std::nullopt);
}

TEST_F(CommandRunnerTest, TheMusicStopsInARoomToo) {
    sonos->rooms = QList<SonosRoom>{kitchen};
    sonos->activeTarget = AudioOutputTarget::sonos(u"RINCON_K"_qs);
    sonos->isSonosPlaying = true;
    Options options;
    options.stopIn = std::chrono::minutes(1);
    EXPECT_EQ(runner->run(options), std::nullopt);
    queue.advance(std::chrono::minutes(1));
    EXPECT_EQ(recorded({u"POST"_qs}), QStringList{u"POST Pause 10.0.0.5"_qs});
}

TEST_F(CommandRunnerTest, AWishToStopLaterCanBeTakenBack) {
    EXPECT_EQ(runner->run(play()), std::nullopt);
    Options options;
    options.stopIn = std::chrono::minutes(1);
    EXPECT_EQ(runner->run(options), std::nullopt);
    options.stopIn = std::chrono::seconds(0);
    EXPECT_EQ(runner->run(options), std::nullopt);
    queue.advance(std::chrono::minutes(2));
    EXPECT_TRUE(player->isPlaying);
}

TEST_F(CommandRunnerTest, AnswersInTheLanguageOfWhoAsks) {
    Options options = output(u"Attic"_qs);
    options.language = AppLanguage::de;
    EXPECT_EQ(runner->run(options), u"--output: es gibt keinen Raum „Attic“"_qs);
}

} // namespace
} // namespace zofra::test
