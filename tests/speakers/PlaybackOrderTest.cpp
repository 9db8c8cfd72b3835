// SPDX-License-Identifier: GPL-3.0-or-later
// What is chosen last holds, whatever time the players take to answer what was chosen before.
#include "tests/speakers/ManagerTest.h"

#include <chrono>

namespace zofra {
namespace {

using test::groupXml;
using test::memberXml;
using namespace std::chrono_literals;

const QString a = QStringLiteral("A");
const QString b = QStringLiteral("B");
const QString c = QStringLiteral("C");
const auto here = AudioOutputTarget::localMac();
const auto everywhere = AudioOutputTarget::sonosEverywhere();

QString member(const QString& uuid, int host, const QString& name) {
    return memberXml(uuid, test::descriptionUrl(host).toString(), name);
}

class PlaybackOrderTest : public test::ManagerTest {
protected:
    /// Two rooms of one player each, at 10.0.0.1 and .3, whose answers the test gives.
    void startWithTwoRooms() {
        house.players = {{1, {a, QStringLiteral("Attic")}}, {3, {c, QStringLiteral("Cellar")}}};
        startWithHouse();
        holdRequests();
    }
    void playRoom(const QString& id) { manager->selectTarget(AudioOutputTarget::sonos(id)); }

    /// Everyone answers, also what that leads to; then nothing is held any more.
    void answerAll(int status = 200) {
        while (!http.open.empty())
            http.answer(status, {});
        queue.drain();
    }
    void findNow() {
        auto& datagrams = network.scripts[QStringLiteral("10.0.0.2")].datagrams;
        datagrams.clear();
        for (const int host : house.players.keys())
            datagrams.push_back(test::ssdpAnswer(test::descriptionUrl(host).toString()));
        answerRequests();
        manager->discoverDevices(false);
        tasks.runAll();
        queue.drain();
        http.requests.clear();
    }
    QString uriOf(const HttpRequest& request) const {
        const auto start = request.body.indexOf("<CurrentURI>") + 12;
        return QString::fromUtf8(request.body.mid(start, request.body.indexOf("</CurrentURI>") - start));
    }
    QString uri(RadioStation station) const { return station.networkPlayerStreamURI(hosts); }
};

TEST_F(PlaybackOrderTest, HereBeforeTheFirstAnswerLeavesThePlayerUnplayed) {
    startWithTwoRooms();
    playRoom(c);
    EXPECT_EQ(requests(), QStringLiteral("SetAVTransportURI 10.0.0.3"));
    manager->selectTarget(here);
    EXPECT_EQ(requests(), QStringLiteral("Stop 10.0.0.1, Stop 10.0.0.3")) << "at once";
    answerAll();
    EXPECT_EQ(requests(), QString()) << "no Play after Stop";
    EXPECT_FALSE(manager->isSonosPlaying);
}

TEST_F(PlaybackOrderTest, APlayThatIsOutIsFollowedByStop) {
    startWithTwoRooms();
    playRoom(c);
    http.answer(200, {});
    EXPECT_EQ(requests(), QStringLiteral("SetAVTransportURI 10.0.0.3, Play 10.0.0.3"));
    manager->stopAllSonos();
    EXPECT_EQ(requests(), QStringLiteral("Stop 10.0.0.1, Stop 10.0.0.3"));
    EXPECT_TRUE(manager->mayStillStart());
    answerAll();
    EXPECT_FALSE(manager->mayStillStart());
    EXPECT_EQ(requests(), QStringLiteral("Stop 10.0.0.3")) << "the player may have obeyed them in any order";
    EXPECT_FALSE(manager->isSonosPlaying);
    EXPECT_TRUE(states.isEmpty());
}

TEST_F(PlaybackOrderTest, AnotherRoomEndsAStartThatHasNotEnded) {
    startWithTwoRooms();
    playRoom(c);
    http.answer(200, {});
    playRoom(a);
    answerAll();
    EXPECT_EQ(requests(), QStringLiteral("SetAVTransportURI 10.0.0.3, Play 10.0.0.3, "
                                         "SetAVTransportURI 10.0.0.1, Stop 10.0.0.3, Play 10.0.0.1"));
    EXPECT_EQ(states, QList<bool>{true}) << "the first start tells nothing";
}

TEST_F(PlaybackOrderTest, TheLastOfSeveralQuickStationsPlays) {
    startWithTwoRooms();
    playRoom(c);
    answerAll();
    http.requests.clear();
    for (const auto station : {RadioStation::joe, RadioStation::qmusic, RadioStation::insideRadio})
        manager->setStation(station);
    EXPECT_EQ(http.requests.size(), 1U) << "the player has one at a time";
    answerAll();
    ASSERT_EQ(http.requests.size(), 3U);
    EXPECT_EQ(uriOf(http.requests[0]), uri(RadioStation::joe));
    EXPECT_EQ(uriOf(http.requests[1]), uri(RadioStation::insideRadio));
    EXPECT_EQ(test::summary(http.requests[2]), QStringLiteral("Play 10.0.0.3"));
}

TEST_F(PlaybackOrderTest, AStationChosenDuringAStartIsTheOneThatPlays) {
    startWithTwoRooms();
    playRoom(c);
    http.answer(200, {});
    manager->setStation(RadioStation::joe);
    answerAll();
    ASSERT_EQ(http.requests.size(), 4U);
    EXPECT_EQ(uriOf(http.requests[2]), uri(RadioStation::joe));
    EXPECT_EQ(requests(), QStringLiteral("SetAVTransportURI 10.0.0.3, Play 10.0.0.3, "
                                         "SetAVTransportURI 10.0.0.3, Play 10.0.0.3"))
        << "taken over without a stop";
    EXPECT_EQ(states, QList<bool>{true});
}

TEST_F(PlaybackOrderTest, AStartWaitsForAStopThatIsOut) {
    startWithTwoRooms();
    manager->stopAllSonos();
    requests();
    playRoom(c);
    EXPECT_EQ(requests(), QString());
    answerAll();
    EXPECT_EQ(requests(), QStringLiteral("SetAVTransportURI 10.0.0.3, Play 10.0.0.3"));
}

TEST_F(PlaybackOrderTest, ClicksWithoutEndMakeAHandfulOfRequests) {
    startWithTwoRooms();
    for (int click = 0; click < 4096; ++click) {
        playRoom(c);
        manager->setStation(click % 2 == 0 ? RadioStation::joe : RadioStation::zofra);
        manager->setVolume(click % 100, *manager->room(c));
        manager->togglePlayPause();
        manager->selectTarget(click % 3 == 0 ? here : everywhere);
    }
    EXPECT_LE(http.requests.size(), 8U);
    manager->selectTarget(here);
    answerAll();
    EXPECT_LE(http.requests.size(), 16U);
    EXPECT_EQ(test::summary(http.requests.back()).section(u' ', 0, 0), QStringLiteral("SetVolume"));
    EXPECT_TRUE(http.requests.back().body.contains("<DesiredVolume>95</DesiredVolume>"));
    EXPECT_FALSE(manager->isSonosPlaying);
}

TEST_F(PlaybackOrderTest, PausingAgainWhilePausingSendsNothing) {
    startWithTwoRooms();
    playRoom(c);
    answerAll();
    requests();
    for (int click = 0; click < 100; ++click)
        manager->togglePlayPause();
    EXPECT_EQ(requests(), QStringLiteral("Pause 10.0.0.3"));
    answerAll();
    EXPECT_FALSE(manager->isSonosPlaying);
}

TEST_F(PlaybackOrderTest, HereReachesACachedRoomBeforeTheFirstRunHasEnded) {
    defaults.values[QStringLiteral("cached_sonos_rooms")] =
        encodeRooms({{QStringLiteral("Attic"),
                      test::otherPlayer(a, QStringLiteral("Attic"), 1),
                      {test::otherPlayer(a, QStringLiteral("Attic"), 1)}}});
    start(true);
    playRoom(a);
    queue.drain();
    requests();
    manager->selectTarget(here);
    EXPECT_EQ(requests(), QStringLiteral("Stop 10.0.0.1"));
    manager->selectTarget(here);
    EXPECT_EQ(requests(), QString()) << "nothing is left to be stopped";
}

TEST_F(PlaybackOrderTest, HereReachesWhatWasStartedAndHasNotBeenFoundAgain) {
    startWithTwoRooms();
    answerRequests();
    playRoom(c);
    playRoom(a);
    queue.drain();
    house.players.remove(3);
    findNow();
    manager->selectTarget(here);
    EXPECT_EQ(requests(), QStringLiteral("Stop 10.0.0.1, Stop 10.0.0.3"));
}

TEST_F(PlaybackOrderTest, ARoomThatHasDisappearedCanStillBePaused) {
    startWithTwoRooms();
    answerRequests();
    playRoom(c);
    queue.drain();
    house.players.remove(3);
    findNow();
    ASSERT_FALSE(manager->room(c));
    manager->togglePlayPause();
    EXPECT_EQ(requests(), QStringLiteral("Pause 10.0.0.3"));
    queue.drain();
    EXPECT_FALSE(manager->isSonosPlaying);
}

/// Two players of one room, of which the one with the larger id leads.
class RegroupedRoomTest : public PlaybackOrderTest {
protected:
    RegroupedRoomTest() {
        house.players = {{1, {a, lounge}}, {2, {b, lounge}}};
        house.groups = {groupXml(b, member(a, 1, lounge) + member(b, 2, lounge))};
        startWithHouse();
        playRoom(b);
        queue.drain();
        house.groups = {groupXml(a, member(a, 1, lounge) + member(b, 2, lounge))};
        findNow();
    }
    const QString lounge = QStringLiteral("Lounge");
};

TEST_F(RegroupedRoomTest, StaysTheTarget) {
    EXPECT_EQ(manager->activeTarget.get(), AudioOutputTarget::sonos(a));
    EXPECT_EQ(manager->activeTargetTitle(), lounge);
    manager->setStation(RadioStation::joe);
    EXPECT_EQ(requests(), QStringLiteral("SetAVTransportURI 10.0.0.1, Play 10.0.0.1, "
                                         "SetAVTransportURI 10.0.0.2"));
    queue.drain();
    manager->togglePlayPause();
    EXPECT_EQ(requests(), QStringLiteral("Pause 10.0.0.1"));
    queue.drain();
    EXPECT_FALSE(manager->isSonosPlaying);
}

TEST_F(RegroupedRoomTest, IsFollowedBeforeAnybodyIsTold) {
    house.groups = {groupXml(b, member(a, 1, lounge) + member(b, 2, lounge))};
    QList<AudioOutputTarget> seen;
    manager->onRoomsUpdated = [&](const QList<SonosRoom>&) { seen.append(manager->activeTarget); };
    findNow();
    EXPECT_EQ(seen, QList<AudioOutputTarget>{AudioOutputTarget::sonos(b)});
}

TEST_F(RegroupedRoomTest, IsNotFollowedOnceItIsGone) {
    house.players = {{3, {c, QStringLiteral("Cellar")}}};
    house.groups.clear();
    findNow();
    EXPECT_EQ(manager->activeTarget.get(), AudioOutputTarget::sonos(a));
    EXPECT_EQ(manager->activeTargetTitle(), lounge);
}

/// "Everywhere" chosen while the first run goes on.
class EarlyEverywhereTest : public PlaybackOrderTest {
protected:
    EarlyEverywhereTest() {
        house.players = {{1, {a, QStringLiteral("Attic")}}};
        network.addInterface(QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), QString());
        network.scripts[QStringLiteral("10.0.0.2")].datagrams = {
            test::ssdpAnswer(test::descriptionUrl(1).toString())};
        start(true).selectTarget(everywhere);
        queue.drain();
        EXPECT_EQ(states, QList<bool>{false}) << "there is nobody yet";
        states.clear();
    }
    /// The run ends; gives the orders that follow.
    QString endRun() {
        tasks.runAll();
        http.requests.clear();
        queue.drain();
        return requests();
    }
    QStringList ownLines() const {
        QStringList lines;
        for (const auto& line : log.lines) {
            if (line.contains(QStringLiteral("überall")))
                lines.append(line);
        }
        return lines;
    }
};

TEST_F(EarlyEverywhereTest, PlaysWhenTheRunEnds) {
    EXPECT_EQ(endRun(), QStringLiteral("SetAVTransportURI 10.0.0.1, Play 10.0.0.1"));
    EXPECT_TRUE(manager->isSonosPlaying);
    EXPECT_EQ(states, QList<bool>{true});
    queue.advance(60s);
    EXPECT_TRUE(ownLines().isEmpty());
}

TEST_F(EarlyEverywhereTest, IsForgottenWhenSomethingElseIsChosen) {
    for (const auto& other : {here, AudioOutputTarget::sonos(a)}) {
        manager->selectTarget(everywhere);
        if (other == here)
            manager->selectTarget(other);
        else
            manager->activeTarget = other;
        EXPECT_EQ(endRun(), QString());
        manager->discoverDevices(false);
    }
}

TEST_F(EarlyEverywhereTest, IsGivenUpAfterThirtySecondsWithOneLine) {
    queue.advance(29'999ms);
    EXPECT_TRUE(ownLines().isEmpty());
    queue.advance(1ms);
    EXPECT_EQ(ownLines(), QStringList{QStringLiteral(
                              "[Sonos] Wiedergabe überall nicht gestartet: Suche dauert zu lange.")});
    EXPECT_EQ(endRun(), QString());
    EXPECT_EQ(ownLines().size(), 1);
}

TEST_F(PlaybackOrderTest, EverywhereWithoutASearchIsNotRepeated) {
    start(false).selectTarget(everywhere);
    queue.advance(60s);
    house.players = {{1, {a, QStringLiteral("Attic")}}};
    network.addInterface(QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), QString());
    findNow();
    EXPECT_FALSE(manager->isSonosPlaying);
    EXPECT_EQ(states, QList<bool>{false});
}

TEST_F(PlaybackOrderTest, ALateFailureOfAPauseDoesNotMakeHerePlay) {
    startWithTwoRooms();
    playRoom(c);
    answerAll();
    manager->togglePlayPause();
    manager->selectTarget(here);
    states.clear();
    answerAll(500);
    EXPECT_FALSE(manager->isSonosPlaying);
    EXPECT_TRUE(states.isEmpty());
}

TEST_F(PlaybackOrderTest, ARoomThatFailsIsNotPlayingInWhateverOrderItsFailuresCome) {
    for (const bool startFailsFirst : {true, false}) {
        startWithTwoRooms();
        playRoom(c);
        answerAll();
        manager->setStation(startFailsFirst ? RadioStation::joe : RadioStation::qmusic);
        manager->togglePlayPause();
        ASSERT_EQ(http.open.size(), 2U) << "a stream and a pause";
        if (!startFailsFirst)
            std::swap(http.open[0], http.open[1]);
        while (!http.open.empty())
            http.fail({HttpError::Code::timedOut, 0, QString()});
        queue.drain();
        EXPECT_FALSE(manager->isSonosPlaying) << startFailsFirst;
        EXPECT_TRUE(http.open.empty());
        answerRequests();
    }
}

TEST_F(PlaybackOrderTest, AnOldStartThatSucceedsLateSaysNothingOfTheNewOne) {
    startWithTwoRooms();
    playRoom(c);
    http.answer(200, {});
    playRoom(a);
    std::swap(http.open[0], http.open[1]);
    http.fail({HttpError::Code::timedOut, 0, QString()});
    answerAll();
    EXPECT_FALSE(manager->isSonosPlaying);
    EXPECT_EQ(states, QList<bool>{false});
}

} // namespace
} // namespace zofra
