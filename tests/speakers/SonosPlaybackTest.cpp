// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/speakers/ManagerTest.h"

namespace zofra {
namespace {

using test::groupXml;
using test::memberXml;

const QString a = QStringLiteral("A");
const QString b = QStringLiteral("B");
const QString c = QStringLiteral("C");
const QString own = QStringLiteral("Own");

QString member(const QString& uuid, int host, const QString& name) {
    return memberXml(uuid, test::descriptionUrl(host).toString(), name);
}

class SonosPlaybackTest : public test::ManagerTest {
protected:
    /// Three rooms of other makers' players at 10.0.0.1 to .3, A leading B, and an own player at .4.
    SonosManager& startWithFourRooms() {
        house.players = {{1, {a, QStringLiteral("Attic")}},
                         {2, {b, QStringLiteral("Bath")}},
                         {3, {c, QStringLiteral("Cellar")}},
                         {4, {own, QStringLiteral("Office"), QStringLiteral("Zofra Pi Player")}}};
        house.groups = {
            groupXml(a, member(a, 1, QStringLiteral("Attic")) + member(b, 2, QStringLiteral("Bath"))),
            groupXml(c, member(c, 3, QStringLiteral("Cellar"))),
            groupXml(own, member(own, 4, QStringLiteral("Office")))};
        return startWithHouse();
    }

    /// Plays everywhere and forgets how.
    void playEverywhere() {
        manager->selectTarget(AudioOutputTarget::sonosEverywhere());
        queue.drain();
        ASSERT_TRUE(manager->isSonosPlaying);
        http.requests.clear();
        states.clear();
    }
    void playRoom(const QString& id) {
        manager->selectTarget(AudioOutputTarget::sonos(id));
        queue.drain();
        ASSERT_TRUE(manager->isSonosPlaying);
        http.requests.clear();
        states.clear();
    }

    QByteArray uriOf(std::size_t request) const {
        const auto& body = http.requests.at(request).body;
        const auto start = body.indexOf("<CurrentURI>") + 12;
        return body.mid(start, body.indexOf("</CurrentURI>") - start);
    }
};

TEST_F(SonosPlaybackTest, InARoomGivesItsPlayerTheStream) {
    startWithFourRooms();
    manager->selectTarget(AudioOutputTarget::sonos(c));
    EXPECT_EQ(manager->activeTarget.get(), AudioOutputTarget::sonos(c));
    EXPECT_EQ(uriOf(0), RadioStation(RadioStation::zofra).networkPlayerStreamURI(hosts).toUtf8());
    EXPECT_EQ(requests(), QStringLiteral("SetAVTransportURI 10.0.0.3, Play 10.0.0.3"));
    EXPECT_FALSE(manager->isSonosPlaying) << "not before the main queue's next turn";
    queue.drain();
    EXPECT_TRUE(manager->isSonosPlaying);
    EXPECT_EQ(states, QList<bool>{true});
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(SonosPlaybackTest, AGroupedPlayerLeavesItsGroupFirst) {
    startWithFourRooms();
    manager->selectTarget(AudioOutputTarget::sonos(b));
    EXPECT_EQ(requests(),
              QStringLiteral("BecomeCoordinatorOfStandaloneGroup 10.0.0.2, SetAVTransportURI 10.0.0.2, "
                             "Play 10.0.0.2"));
}

TEST_F(SonosPlaybackTest, EverywhereOthersFollowTheFirstAndOwnPlayersPlayAlone) {
    startWithFourRooms();
    manager->selectTarget(AudioOutputTarget::sonosEverywhere());
    ASSERT_EQ(http.requests.size(), 6U);
    EXPECT_EQ(uriOf(2), "x-rincon:A");
    EXPECT_EQ(uriOf(3), "x-rincon:A");
    EXPECT_EQ(uriOf(4), RadioStation(RadioStation::zofra).networkPlayerStreamURI(hosts).toUtf8());
    EXPECT_EQ(requests(),
              QStringLiteral("SetAVTransportURI 10.0.0.1, Play 10.0.0.1, SetAVTransportURI 10.0.0.2, "
                             "SetAVTransportURI 10.0.0.3, SetAVTransportURI 10.0.0.4, Play 10.0.0.4"));
    queue.drain();
    EXPECT_TRUE(manager->isSonosPlaying);
    EXPECT_EQ(states, QList<bool>{true});
}

TEST_F(SonosPlaybackTest, TheGroupsStartAtOnceAndEachStepWaitsForTheOneBefore) {
    startWithFourRooms();
    holdRequests();
    manager->selectTarget(AudioOutputTarget::sonosEverywhere());
    EXPECT_EQ(requests(), QStringLiteral("SetAVTransportURI 10.0.0.1, SetAVTransportURI 10.0.0.4"));
    http.answer(200, {});
    EXPECT_EQ(requests(), QStringLiteral("Play 10.0.0.1"));
    http.answer(204, {});
    EXPECT_EQ(requests(), QStringLiteral("Play 10.0.0.4"));
    http.answer(200, {});
    EXPECT_EQ(requests(), QStringLiteral("SetAVTransportURI 10.0.0.2, SetAVTransportURI 10.0.0.3"));
    http.answer(200, {});
    http.answer(200, {});
    queue.drain();
    EXPECT_TRUE(states.isEmpty()) << "one follower has not answered";
    http.answer(500, {});
    queue.drain();
    EXPECT_EQ(states, QList<bool>{true}) << "followers do not count";
    EXPECT_TRUE(http.open.empty());
}

TEST_F(SonosPlaybackTest, AGroupThatFailsAtAnyStepIsNotAskedFurther) {
    for (int failing = 0; failing < 3; ++failing) {
        startWithFourRooms();
        holdRequests();
        manager->selectTarget(AudioOutputTarget::sonos(b));
        for (int step = 0; step <= failing; ++step)
            http.answer(step == failing ? 500 : 200, {});
        EXPECT_EQ(http.requests.size(), static_cast<std::size_t>(failing) + 1);
        queue.drain();
        EXPECT_FALSE(manager->isSonosPlaying);
        EXPECT_EQ(states.takeLast(), false);
        ASSERT_FALSE(log.lines.empty());
        EXPECT_EQ(log.lines.back(),
                  QStringLiteral("[Sonos] Wiedergabe nur auf 0 von 1 Ausgabegruppen gestartet."));
        answerRequests();
    }
}

TEST_F(SonosPlaybackTest, APartialStartIsLoggedAndCountsAsPlaying) {
    house.players = {
        {1, {a, QStringLiteral("Attic")}},
        {4, {own, QStringLiteral("Office"), QStringLiteral("Zofra Pi Player")}},
        {5, {QStringLiteral("Own2"), QStringLiteral("Hall"), QStringLiteral("Zofra Pi Player")}}};
    startWithHouse();
    http.automatic = [](const HttpRequest& request) {
        return test::answered(request.url.host().endsWith(u'4') ? 500 : 200);
    };
    manager->selectTarget(AudioOutputTarget::sonosEverywhere());
    queue.drain();
    EXPECT_TRUE(manager->isSonosPlaying);
    EXPECT_EQ(log.lines,
              (std::vector<QString>{
                  QStringLiteral("[Sonos] SOAP SetAVTransportURI an 10.0.0.4 fehlgeschlagen: HTTP 500"),
                  QStringLiteral("[Sonos] Wiedergabe nur auf 2 von 3 Ausgabegruppen gestartet.")}));
}

TEST_F(SonosPlaybackTest, TheStateIsToldBeforeAPartialStartIsLogged) {
    house.players = {{1, {a, QStringLiteral("Attic")}}};
    startWithHouse();
    house.controlStatus = 500;
    std::vector<QString> loggedWhenTold;
    manager->onPlaybackStateChanged = [&](bool) { loggedWhenTold = log.lines; };
    manager->selectTarget(AudioOutputTarget::sonosEverywhere());
    queue.drain();
    EXPECT_EQ(loggedWhenTold, std::vector<QString>{QStringLiteral(
                                  "[Sonos] SOAP SetAVTransportURI an 10.0.0.1 fehlgeschlagen: HTTP 500")});
    EXPECT_EQ(log.lines.back(),
              QStringLiteral("[Sonos] Wiedergabe nur auf 0 von 1 Ausgabegruppen gestartet."));
}

TEST_F(SonosPlaybackTest, EverywhereWithoutPlayersStartsNothing) {
    start(false);
    manager->isSonosPlaying = true;
    manager->selectTarget(AudioOutputTarget::sonosEverywhere());
    EXPECT_TRUE(manager->isSonosPlaying) << "not before the main queue's next turn";
    queue.drain();
    EXPECT_FALSE(manager->isSonosPlaying);
    EXPECT_EQ(states, QList<bool>{false});
    EXPECT_TRUE(http.requests.empty());
    EXPECT_TRUE(log.lines.empty()) << "none of none is all";
}

TEST_F(SonosPlaybackTest, AnUnknownRoomDoesNothing) {
    startWithFourRooms();
    manager->playZofra(QStringLiteral("unknown"));
    queue.drain();
    EXPECT_TRUE(http.requests.empty());
    EXPECT_TRUE(states.isEmpty());
    manager->selectTarget(AudioOutputTarget::sonos(QStringLiteral("unknown")));
    queue.drain();
    EXPECT_TRUE(http.requests.empty());
    EXPECT_EQ(manager->activeTarget.get(), AudioOutputTarget::sonos(QStringLiteral("unknown")));
    manager->isSonosPlaying = true;
    manager->togglePlayPause();
    queue.drain();
    EXPECT_TRUE(http.requests.empty());
    EXPECT_TRUE(manager->isSonosPlaying);
}

TEST_F(SonosPlaybackTest, TheLocalPlayerIsSilencedBeforeThePlayersAreAsked) {
    startWithFourRooms();
    for (const auto& target : {AudioOutputTarget::sonos(c), AudioOutputTarget::sonosEverywhere()}) {
        localPlayer.play();
        queue.drain();
        QList<bool> told;
        localPlayer.onPlaybackStateChanged = [&](bool playing) { told.append(playing); };
        bool wasSilent = false;
        http.automatic = [&](const HttpRequest&) {
            wasSilent = !localPlayer.isPlaying && !players.current()->wanted;
            return test::answered(200);
        };
        manager->selectTarget(target);
        EXPECT_TRUE(wasSilent);
        EXPECT_FALSE(localPlayer.isBuffering);
        EXPECT_EQ(told, QList<bool>{false});
        localPlayer.onPlaybackStateChanged = nullptr;
        queue.drain();
    }
}

TEST_F(SonosPlaybackTest, ThisComputerStopsThePlayersAndStartsNothing) {
    startWithFourRooms();
    playEverywhere();
    manager->selectTarget(AudioOutputTarget::localMac());
    EXPECT_EQ(requests(), QStringLiteral("Stop 10.0.0.1, Stop 10.0.0.2, Stop 10.0.0.3, Stop 10.0.0.4"));
    EXPECT_FALSE(manager->isSonosPlaying);
    EXPECT_EQ(states, QList<bool>{false});
    EXPECT_FALSE(localPlayer.isPlaying);
}

TEST_F(SonosPlaybackTest, ThisComputerIsToldOfOnceThePlayersHaveBeenToldToStop) {
    startWithFourRooms();
    playEverywhere();
    QString askedWhenTold;
    manager->onPlaybackStateChanged = [&](bool) { askedWhenTold = requests(); };
    manager->selectTarget(AudioOutputTarget::localMac());
    EXPECT_EQ(askedWhenTold, QStringLiteral("Stop 10.0.0.1, Stop 10.0.0.2, Stop 10.0.0.3, Stop 10.0.0.4"));
}

TEST_F(SonosPlaybackTest, StoppingAllReachesEveryControllablePlayerAndTellsNobody) {
    house.players = {{1, {a, QStringLiteral("Attic")}},
                     {2, {b, QStringLiteral("Attic"), QStringLiteral("Sonos Sub")}},
                     {3, {c, QStringLiteral("Attic")}}};
    house.groups = {groupXml(a, member(a, 1, QStringLiteral("Attic")) +
                                    member(b, 2, QStringLiteral("Attic")) +
                                    memberXml(c, test::descriptionUrl(3).toString(), QStringLiteral("Attic"),
                                              QStringLiteral("Invisible='1'")))};
    startWithHouse();
    manager->isSonosPlaying = true;
    manager->stopAllSonos();
    EXPECT_EQ(requests(), QStringLiteral("Stop 10.0.0.1")) << "neither the sub nor the hidden one";
    EXPECT_FALSE(manager->isSonosPlaying);
    EXPECT_TRUE(states.isEmpty());
}

TEST_F(SonosPlaybackTest, AnotherStationIsOnlyRecordedWhileThePlayersAreStopped) {
    startWithFourRooms();
    manager->activeTarget = AudioOutputTarget::sonos(c);
    manager->setStation(RadioStation::joe);
    queue.drain();
    EXPECT_TRUE(http.requests.empty());
    EXPECT_EQ(manager->currentStation.get(), RadioStation::joe);
    manager->togglePlayPause();
    EXPECT_EQ(uriOf(0), RadioStation(RadioStation::joe).networkPlayerStreamURI(hosts).toUtf8());
}

TEST_F(SonosPlaybackTest, AnotherStationIsSentToARoomThatPlays) {
    startWithFourRooms();
    playRoom(c);
    manager->setStation(RadioStation::insideRadio);
    EXPECT_EQ(uriOf(0), RadioStation(RadioStation::insideRadio).networkPlayerStreamURI(hosts).toUtf8());
    EXPECT_EQ(requests(), QStringLiteral("SetAVTransportURI 10.0.0.3, Play 10.0.0.3"));
    queue.drain();
    EXPECT_EQ(states, QList<bool>{true});
}

TEST_F(SonosPlaybackTest, AnotherStationIsSentEverywhere) {
    startWithFourRooms();
    playEverywhere();
    manager->setStation(RadioStation::qmusic);
    EXPECT_EQ(http.requests.size(), 6U);
}

TEST_F(SonosPlaybackTest, TheSameStationIsNotSentAgain) {
    startWithFourRooms();
    playRoom(c);
    int changes = 0;
    const auto token = manager->observe([&] { ++changes; });
    manager->setStation(RadioStation::zofra);
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(http.requests.empty());
}

TEST_F(SonosPlaybackTest, AnotherStationForThisComputerReachesNoPlayer) {
    startWithFourRooms();
    manager->isSonosPlaying = true;
    manager->setStation(RadioStation::qmusic);
    EXPECT_TRUE(http.requests.empty());
    EXPECT_EQ(manager->currentStation.get(), RadioStation::qmusic);
}

TEST_F(SonosPlaybackTest, TogglingARoomPlaysAndPauses) {
    startWithFourRooms();
    manager->activeTarget = AudioOutputTarget::sonos(c);
    manager->togglePlayPause();
    queue.drain();
    EXPECT_TRUE(manager->isSonosPlaying);
    requests();
    manager->togglePlayPause();
    EXPECT_EQ(requests(), QStringLiteral("Pause 10.0.0.3"));
    EXPECT_TRUE(manager->isSonosPlaying) << "not before the main queue's next turn";
    queue.drain();
    EXPECT_FALSE(manager->isSonosPlaying);
    EXPECT_EQ(states, (QList<bool>{true, false}));
}

TEST_F(SonosPlaybackTest, APauseThatFailsLeavesTheRoomPlaying) {
    startWithFourRooms();
    playRoom(c);
    house.controlStatus = 500;
    manager->togglePlayPause();
    queue.drain();
    EXPECT_TRUE(manager->isSonosPlaying);
    EXPECT_EQ(states, QList<bool>{true});
}

TEST_F(SonosPlaybackTest, TogglingEverywherePlaysAndStops) {
    startWithFourRooms();
    manager->activeTarget = AudioOutputTarget::sonosEverywhere();
    manager->togglePlayPause();
    queue.drain();
    EXPECT_TRUE(manager->isSonosPlaying);
    requests();
    manager->togglePlayPause();
    EXPECT_EQ(requests(), QStringLiteral("Stop 10.0.0.1, Stop 10.0.0.2, Stop 10.0.0.3, Stop 10.0.0.4"));
    EXPECT_FALSE(manager->isSonosPlaying);
    EXPECT_EQ(states, (QList<bool>{true, false}));
}

TEST_F(SonosPlaybackTest, TogglingThisComputerTogglesTheLocalPlayer) {
    startWithFourRooms();
    manager->togglePlayPause();
    EXPECT_TRUE(localPlayer.isPlaying);
    QList<bool> told;
    localPlayer.onPlaybackStateChanged = [&](bool playing) { told.append(playing); };
    manager->togglePlayPause();
    EXPECT_FALSE(localPlayer.isPlaying);
    EXPECT_FALSE(localPlayer.isBuffering);
    EXPECT_EQ(told, QList<bool>{false});
    EXPECT_TRUE(http.requests.empty());
    EXPECT_TRUE(states.isEmpty());
}

/// Two players of one room, of which the one with the larger id leads.
class PausingASharedRoomTest : public SonosPlaybackTest {
protected:
    PausingASharedRoomTest() {
        const auto lounge = QStringLiteral("Lounge");
        house.players = {{1, {a, lounge}}, {2, {b, lounge}}, {3, {c, QStringLiteral("Cellar")}}};
        house.groups = {groupXml(b, member(a, 1, lounge) + member(b, 2, lounge)),
                        groupXml(c, member(c, 3, QStringLiteral("Cellar")))};
        startWithHouse();
    }
};

TEST_F(PausingASharedRoomTest, ReachesTheCoordinatorAndTheLeaderOfTheLastPlay) {
    manager->selectTarget(AudioOutputTarget::sonos(b));
    EXPECT_EQ(requests(),
              QStringLiteral("BecomeCoordinatorOfStandaloneGroup 10.0.0.1, SetAVTransportURI 10.0.0.1, "
                             "Play 10.0.0.1, SetAVTransportURI 10.0.0.2"));
    queue.drain();
    manager->togglePlayPause();
    EXPECT_EQ(requests(), QStringLiteral("Pause 10.0.0.2, Pause 10.0.0.1"));
    queue.drain();
    EXPECT_FALSE(manager->isSonosPlaying);
}

TEST_F(PausingASharedRoomTest, SucceedsWhenAnyOfThemPauses) {
    for (const auto& [first, second, playing] :
         {std::tuple(500, 200, false), {200, 500, false}, {500, 500, true}}) {
        answerRequests();
        playRoom(b);
        holdRequests();
        manager->togglePlayPause();
        http.answer(first, {});
        queue.drain();
        EXPECT_TRUE(states.isEmpty()) << "the other one has not answered";
        http.answer(second, {});
        queue.drain();
        EXPECT_EQ(states, QList<bool>{playing});
        EXPECT_EQ(manager->isSonosPlaying.get(), playing);
    }
}

TEST_F(PausingASharedRoomTest, DoesNotReachLeadersOfAnotherRoom) {
    playRoom(b);
    manager->activeTarget = AudioOutputTarget::sonos(c);
    manager->togglePlayPause();
    EXPECT_EQ(requests(), QStringLiteral("Pause 10.0.0.3"));
}

TEST_F(PausingASharedRoomTest, ReachesALeaderWhereItWasFoundLast) {
    playRoom(b);
    house.players = {{7, {a, QStringLiteral("Lounge")}}, {2, {b, QStringLiteral("Lounge")}}};
    network.scripts[QStringLiteral("10.0.0.2")].datagrams.push_back(
        test::ssdpAnswer(test::descriptionUrl(7).toString()));
    manager->discoverDevices(false);
    tasks.runAll();
    queue.drain();
    http.requests.clear();
    manager->togglePlayPause();
    EXPECT_EQ(requests(), QStringLiteral("Pause 10.0.0.2, Pause 10.0.0.7"));
}

TEST_F(SonosPlaybackTest, TheVolumeOfARoomReachesAllItsPlayersClamped) {
    const auto lounge = QStringLiteral("Lounge");
    house.players = {{1, {a, lounge}}, {2, {b, lounge}}, {3, {c, QStringLiteral("Cellar")}}};
    house.groups = {groupXml(a, member(a, 1, lounge) + member(b, 2, lounge))};
    startWithHouse();
    manager->setVolume(150, *manager->room(a));
    ASSERT_EQ(http.requests.size(), 2U);
    for (const auto& request : http.requests)
        EXPECT_TRUE(request.body.contains("<DesiredVolume>100</DesiredVolume>"));
    EXPECT_EQ(requests(), QStringLiteral("SetVolume 10.0.0.1, SetVolume 10.0.0.2"));
    queue.drain();
    EXPECT_TRUE(states.isEmpty());
}

TEST_F(SonosPlaybackTest, TheVolumeEverywhereReachesEveryControllablePlayer) {
    startWithFourRooms();
    manager->setVolumeEverywhere(-1);
    ASSERT_EQ(http.requests.size(), 4U);
    for (const auto& request : http.requests)
        EXPECT_TRUE(request.body.contains("<DesiredVolume>0</DesiredVolume>"));
    EXPECT_EQ(
        requests(),
        QStringLiteral("SetVolume 10.0.0.1, SetVolume 10.0.0.2, SetVolume 10.0.0.3, SetVolume 10.0.0.4"));
}

TEST_F(SonosPlaybackTest, ADenialDuringControlIsFlagged) {
    startWithFourRooms();
    http.automatic = [](const HttpRequest&) { return test::failed(HttpError::Code::notConnected); };
    manager->setVolumeEverywhere(10);
    queue.drain();
    EXPECT_TRUE(manager->localNetworkDenied);
    EXPECT_EQ(updates.size(), 1);
}

TEST_F(SonosPlaybackTest, AManagerThatEndsMeanwhileIsNotTouchedAgain) {
    startWithFourRooms();
    holdRequests();
    manager->selectTarget(AudioOutputTarget::sonosEverywhere());
    manager->setVolumeEverywhere(5);
    http.answer(200, {});
    manager.reset();
    const auto sent = http.requests.size();
    while (!http.open.empty())
        http.answer(500, {});
    queue.drain();
    EXPECT_EQ(http.requests.size(), sent) << "the chain ends";
    EXPECT_TRUE(log.lines.empty());
    EXPECT_TRUE(states.isEmpty());
}

TEST_F(SonosPlaybackTest, AWorkItemThatComesAfterTheManagerDoesNothing) {
    startWithFourRooms();
    manager->discoverDevices(true);
    manager.reset();
    const int before = network.listings();
    tasks.runAll();
    queue.drain();
    EXPECT_EQ(network.listings(), before);
    EXPECT_TRUE(http.requests.empty());
}

TEST_F(SonosPlaybackTest, TheTimerEndsWithTheManager) {
    start(true);
    EXPECT_EQ(queue.pendingTimers(), 1U);
    manager.reset();
    EXPECT_EQ(queue.pendingTimers(), 0U);
}

} // namespace
} // namespace zofra
