// SPDX-License-Identifier: GPL-3.0-or-later
// Frames, tracks, silence and log lines of the live socket.
#include "metadata/LiveSocket.h"
#include "tests/metadata/ModelTest.h"

#include <QRegularExpression>

namespace zofra::test {
namespace {

class ModelSocketTest : public ModelTest {};

TEST_F(ModelSocketTest, OpensAFreshSessionOfTheService) {
    start(RadioStation::zofra);
    ASSERT_EQ(sockets.sockets.size(), 1U);
    const auto url = sockets.last().url;
    EXPECT_EQ(url.scheme(), u"wss"_qs);
    EXPECT_EQ(url.authority(), hosts.liveSocketHost());
    EXPECT_TRUE(
        QRegularExpression(u"^/api/[1-9][0-9]{2}/[0-9a-f]{32}/websocket$"_qs).match(url.path()).hasMatch());
    EXPECT_FALSE(url.hasQuery());
    EXPECT_EQ(sockets.last().resumes, 1);
    EXPECT_EQ(sockets.last().receivers.size(), 1U);
    EXPECT_TRUE(sockets.last().sent.empty());
    EXPECT_EQ(Probe::lastSocketActivity(*model), queue.clock()());
}

TEST_F(ModelSocketTest, EveryConnectionIsAnotherSession) {
    start(RadioStation::zofra);
    failSocket(u"x"_qs);
    queue.advance(5s);
    ASSERT_EQ(sockets.sockets.size(), 2U);
    EXPECT_NE(sockets.sockets[0]->url.path().section(u'/', 3, 3),
              sockets.sockets[1]->url.path().section(u'/', 3, 3));
}

class StationWithoutFeedTest : public ModelTest, public testing::WithParamInterface<RadioStation::Case> {};

TEST_P(StationWithoutFeedTest, NeverOpensASocket) {
    start(GetParam());
    EXPECT_TRUE(sockets.sockets.empty());
    EXPECT_EQ(Probe::lastSocketActivity(*model), std::nullopt);
    queue.advance(300s);
    EXPECT_TRUE(sockets.sockets.empty());
    Probe::sendJoinSubscription(*model);
    Probe::scheduleReconnect(*model);
    EXPECT_FALSE(Probe::reconnectIsPending(*model));
    queue.advance(60s);
    EXPECT_TRUE(sockets.sockets.empty());
}

INSTANTIATE_TEST_SUITE_P(Stations, StationWithoutFeedTest,
                         testing::Values(RadioStation::radioContact, RadioStation::belRTL,
                                         RadioStation::insideRadio, RadioStation::sudRadioBelgique,
                                         RadioStation::sudRadioHainaut));

class StationWithFeedTest : public ModelTest, public testing::WithParamInterface<RadioStation::Case> {};

TEST_P(StationWithFeedTest, JoinsOnceOpen) {
    start(GetParam());
    frame(u"o"_qs);
    ASSERT_EQ(sockets.last().sent.size(), 1U);
    EXPECT_EQ(sockets.last().sentText(0), joinMessage(GetParam()));
    sockets.last().finishSend({});
    queue.drain();
    EXPECT_EQ(state(), SocketState::connected);
    EXPECT_TRUE(output.lines.empty());
}

INSTANTIATE_TEST_SUITE_P(Stations, StationWithFeedTest,
                         testing::Values(RadioStation::zofra, RadioStation::qmusic, RadioStation::joe,
                                         RadioStation::zofraClassX));

TEST_F(ModelSocketTest, ASecondOpenFrameJoinsAgain) {
    startConnected(RadioStation::zofra);
    frame(u"o"_qs);
    ASSERT_EQ(sockets.last().sent.size(), 2U);
    EXPECT_EQ(sockets.last().sentText(0), sockets.last().sentText(1));
    EXPECT_EQ(state(), SocketState::connected);
}

TEST_F(ModelSocketTest, DoesNotOpenASecondSocketWhileOneIsThere) {
    start(RadioStation::zofra);
    model->startWebSocket();
    EXPECT_EQ(sockets.sockets.size(), 1U);
    frame(u"o"_qs);
    model->startWebSocket();
    EXPECT_EQ(sockets.sockets.size(), 1U);
    EXPECT_TRUE(sockets.last().cancels.empty());
}

TEST_F(ModelSocketTest, ListensForOneMessageAtATime) {
    startConnected(RadioStation::zofra);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(sockets.last().receivers.size(), 1U);
        frame(u"h"_qs);
    }
    sockets.last().deliver(u"h"_qs);
    EXPECT_TRUE(sockets.last().receivers.empty()) << "not before the main thread has seen the last one";
    queue.drain();
    EXPECT_EQ(sockets.last().receivers.size(), 1U);
}

TEST_F(ModelSocketTest, AHeartbeatOnlyCountsAsActivity) {
    startConnected(RadioStation::zofra);
    queue.advance(7s);
    frame(u"h"_qs);
    EXPECT_EQ(Probe::lastSocketActivity(*model), queue.clock()());
    EXPECT_EQ(state(), SocketState::connected);
    EXPECT_EQ(sockets.last().sent.size(), 1U);
    EXPECT_TRUE(updates.empty());
}

TEST_F(ModelSocketTest, UnknownFramesCountAsActivityAndNothingElse) {
    startConnected(RadioStation::zofra);
    for (const auto& text :
         {u""_qs, u"x"_qs, u"oo"_qs, u"hh"_qs, u"a"_qs, u"a{}"_qs, u"[\"o\"]"_qs, u"a[garbage"_qs}) {
        queue.advance(1s);
        frame(text);
        EXPECT_EQ(Probe::lastSocketActivity(*model), queue.clock()());
    }
    EXPECT_EQ(state(), SocketState::connected);
    EXPECT_EQ(sockets.last().sent.size(), 1U);
    EXPECT_TRUE(updates.empty());
    EXPECT_EQ(sockets.last().receivers.size(), 1U);
}

TEST_F(ModelSocketTest, ABinaryMessageIsReadAsUtf8) {
    start(RadioStation::zofra);
    frame(QByteArray("o"));
    EXPECT_EQ(state(), SocketState::connected);
    frame(trackFrame(u"zofra_be"_qs, u"Déjà"_qs).toUtf8());
    EXPECT_EQ(model->currentSong.get(), u"Déjà"_qs);
}

TEST_F(ModelSocketTest, ABinaryMessageThatIsNoUtf8IsDroppedButCounts) {
    start(RadioStation::zofra);
    queue.advance(3s);
    frame(QByteArray("o\xFF"));
    EXPECT_EQ(state(), SocketState::connecting);
    EXPECT_EQ(Probe::lastSocketActivity(*model), queue.clock()());
    EXPECT_EQ(sockets.last().receivers.size(), 1U);
}

TEST_F(ModelSocketTest, ATrackSetsBothTexts) {
    startConnected(RadioStation::joe);
    queue.advance(2s);
    frame(trackFrame(u"joe_fm"_qs, u" Song\n"_qs, u"Band"_qs, u"Later"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Band – Song"_qs);
    EXPECT_EQ(model->nextSong.get(), u"Later"_qs);
    EXPECT_FALSE(model->isLoading());
    EXPECT_EQ(updates, (std::vector<Update>{{u"Band – Song"_qs, u"Later"_qs}}));
    EXPECT_EQ(Probe::lastLiveTrack(*model), queue.clock()());
    EXPECT_EQ(Probe::lastApplied(*model), Probe::counter(*model));
    EXPECT_EQ(sockets.last().receivers.size(), 1U);
}

TEST_F(ModelSocketTest, ATrackWithoutANextOneClearsIt) {
    startConnected(RadioStation::joe);
    frame(trackFrame(u"joe_fm"_qs, u"One"_qs, std::nullopt, u"Two"_qs));
    frame(trackFrame(u"joe_fm"_qs, u"Two"_qs));
    EXPECT_EQ(model->nextSong.get(), std::nullopt);
    frame(trackFrame(u"joe_fm"_qs, u"Two"_qs, std::nullopt, u"  "_qs));
    EXPECT_EQ(model->nextSong.get(), std::nullopt) << "a next song without a text is none";
    EXPECT_EQ(updates, (std::vector<Update>{
                           {u"One"_qs, u"Two"_qs}, {u"Two"_qs, std::nullopt}, {u"Two"_qs, std::nullopt}}));
}

TEST_F(ModelSocketTest, TheSameTrackAgainIsToldAgain) {
    startConnected(RadioStation::joe);
    frame(trackFrame(u"joe_fm"_qs, u"One"_qs));
    frame(trackFrame(u"joe_fm"_qs, u"One"_qs));
    EXPECT_EQ(updates.size(), 2U);
}

TEST_F(ModelSocketTest, ATrackOfAnotherStationChangesNothing) {
    startConnected(RadioStation::joe);
    frame(trackFrame(u"qmusic_be"_qs, u"Foreign"_qs));
    EXPECT_TRUE(updates.empty());
    EXPECT_TRUE(model->isLoading());
    EXPECT_EQ(Probe::lastLiveTrack(*model), std::nullopt);
    EXPECT_EQ(Probe::lastApplied(*model), 0U);
    frame(trackFrame(std::nullopt, u"For everyone"_qs));
    EXPECT_EQ(model->currentSong.get(), u"For everyone"_qs);
}

TEST_F(ModelSocketTest, ParseReadsTheCurrentStation) {
    make(RadioStation::joe);
    const auto text = trackFrame(u"joe_fm"_qs, u"Song"_qs);
    EXPECT_TRUE(model->parseSockJSMessage(text));
    model->setStation(RadioStation::belRTL);
    EXPECT_FALSE(model->parseSockJSMessage(text));
}

TEST_F(ModelSocketTest, ATrackBeforeTheOpenFrameIsShownButNotFresh) {
    start(RadioStation::joe);
    frame(trackFrame(u"joe_fm"_qs, u"Early"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Early"_qs);
    EXPECT_FALSE(Probe::hasFreshLiveTrack(*model));
}

TEST_F(ModelSocketTest, TextsFromTheNetworkAreKeptAsTheyAre) {
    startConnected(RadioStation::joe);
    const auto odd = u"a & b _c_ <b>x</b>\nline\u202Eback\u0007"_qs + QString(4096, u'x');
    frame(trackFrame(u"joe_fm"_qs, odd));
    EXPECT_EQ(model->currentSong.get(), odd);
}

TEST_F(ModelSocketTest, ReceiveErrorIsLoggedAndReconnectsAfterFiveSeconds) {
    startConnected(RadioStation::zofra);
    failSocket(u"Die Verbindung ging verloren."_qs);
    EXPECT_EQ(output.lines,
              std::vector{u"Zofra WebSocket Verbindung unterbrochen: Die Verbindung ging verloren."_qs});
    EXPECT_EQ(state(), SocketState::waitingToReconnect);
    ASSERT_EQ(sockets.last().cancels.size(), 1U);
    EXPECT_EQ(sockets.last().cancels[0].closeCode, SocketCloseCode::normalClosure);
    EXPECT_TRUE(sockets.last().receivers.empty()) << "listening has ended";
    queue.advance(4999ms);
    EXPECT_EQ(sockets.sockets.size(), 1U);
    queue.advance(1ms);
    EXPECT_EQ(sockets.sockets.size(), 2U);
    EXPECT_EQ(state(), SocketState::connecting);
}

TEST_F(ModelSocketTest, LogLineIsGermanWhateverTheLanguage) {
    languages.setCurrentLanguage(AppLanguage::fr);
    start(RadioStation::zofra);
    failSocket(u"x"_qs);
    EXPECT_EQ(output.lines, std::vector{u"Zofra WebSocket Verbindung unterbrochen: x"_qs});
}

TEST_F(ModelSocketTest, ACloseFrameReconnectsSilently) {
    startConnected(RadioStation::zofra);
    frame(u"c[3000,\"Go away!\"]"_qs);
    EXPECT_EQ(state(), SocketState::waitingToReconnect);
    EXPECT_TRUE(output.lines.empty());
    EXPECT_EQ(sockets.last().cancels.size(), 1U);
    EXPECT_TRUE(sockets.last().receivers.empty());
}

TEST_F(ModelSocketTest, FailedJoinIsLoggedAndTheHttpSourcesFillInAtOnce) {
    startConnected(RadioStation::zofra);
    const auto rounds = Probe::counter(*model);
    sockets.last().finishSend(failure(u"broken pipe"_qs));
    queue.drain();
    EXPECT_EQ(output.lines, std::vector{u"Fehler beim Senden des WebSocket-Abonnements: broken pipe"_qs});
    EXPECT_EQ(state(), SocketState::waitingToReconnect);
    EXPECT_EQ(Probe::counter(*model), rounds + 1);
    EXPECT_EQ(sockets.last().cancels.size(), 1U);
}

TEST_F(ModelSocketTest, LateResultsOfAReplacedSocketAreDropped) {
    startConnected(RadioStation::zofra);
    const auto old = sockets.sockets.back();
    model->setStation(RadioStation::joe);
    updates.clear();
    const auto activity = Probe::lastSocketActivity(*model);
    const auto rounds = Probe::counter(*model);
    queue.advance(1s);

    old->deliver(trackFrame(std::nullopt, u"Late"_qs));
    old->finishSend(failure(u"late"_qs));
    queue.drain();

    EXPECT_TRUE(updates.empty());
    EXPECT_TRUE(output.lines.empty());
    EXPECT_TRUE(old->receivers.empty()) << "no further receive on it";
    EXPECT_EQ(Probe::lastSocketActivity(*model), activity);
    EXPECT_EQ(Probe::counter(*model), rounds);
    EXPECT_EQ(state(), SocketState::connecting);
}

TEST_F(ModelSocketTest, LateErrorOfAReplacedSocketIsDropped) {
    startConnected(RadioStation::zofra);
    const auto old = sockets.sockets.back();
    model->setStation(RadioStation::joe);
    old->fail(u"late"_qs);
    queue.drain();
    EXPECT_TRUE(output.lines.empty());
    EXPECT_EQ(state(), SocketState::connecting);
}

TEST_F(ModelSocketTest, AResultThatWaitsWhileTheSocketIsReplacedIsDropped) {
    startConnected(RadioStation::zofra);
    sockets.last().deliver(trackFrame(std::nullopt, u"Late"_qs));
    model->setStation(RadioStation::joe);
    updates.clear();
    queue.drain();
    EXPECT_TRUE(updates.empty());
    EXPECT_EQ(sockets.sockets.front()->receivers.size(), 0U);
}

TEST_F(ModelSocketTest, ResultsAfterAReconnectWithNoSocketAreDropped) {
    startConnected(RadioStation::zofra);
    const auto old = sockets.sockets.back();
    frame(u"h"_qs);
    Probe::scheduleReconnect(*model);
    old->deliver(u"o"_qs);
    queue.drain();
    EXPECT_EQ(state(), SocketState::waitingToReconnect);
}

TEST_F(ModelSocketTest, SilenceIsNoticedAtExactlyFortyFiveSeconds) {
    start(RadioStation::zofra);
    queue.advance(44999ms);
    EXPECT_EQ(sockets.sockets.size(), 1U);
    queue.advance(1ms);
    ASSERT_EQ(sockets.sockets.size(), 2U);
    EXPECT_EQ(sockets.sockets[0]->cancels.size(), 1U);
    EXPECT_EQ(state(), SocketState::connecting);
}

TEST_F(ModelSocketTest, SilenceOfFortyFourPointNineSecondsIsBearable) {
    start(RadioStation::zofra);
    queue.advance(100ms);
    frame(u"o"_qs);
    queue.advance(44900ms);
    EXPECT_EQ(queue.elapsed(), 45s) << "a tick, 44.9 s after the last frame";
    EXPECT_EQ(sockets.sockets.size(), 1U);
    EXPECT_EQ(state(), SocketState::connected);
    queue.advance(15s);
    EXPECT_EQ(sockets.sockets.size(), 2U);
    EXPECT_EQ(state(), SocketState::connecting);
}

TEST_F(ModelSocketTest, HeartbeatsKeepTheSocketForEver) {
    startConnected(RadioStation::zofra);
    for (int i = 0; i < 100; ++i) {
        queue.advance(25s);
        frame(u"h"_qs);
    }
    EXPECT_EQ(sockets.sockets.size(), 1U);
    EXPECT_EQ(state(), SocketState::connected);
}

TEST_F(ModelSocketTest, ALiveTrackIsFreshForNinetySeconds) {
    startConnected(RadioStation::zofra);
    EXPECT_FALSE(Probe::hasFreshLiveTrack(*model)) << "none yet";
    frame(trackFrame(u"zofra_be"_qs, u"Song"_qs));
    EXPECT_TRUE(Probe::hasFreshLiveTrack(*model));
    for (int i = 0; i < 3; ++i) {
        queue.advance(29966ms);
        frame(u"h"_qs);
    }
    queue.advance(2ms);
    EXPECT_TRUE(Probe::hasFreshLiveTrack(*model)) << "89.9 s";
    queue.advance(99ms);
    EXPECT_TRUE(Probe::hasFreshLiveTrack(*model));
    queue.advance(1ms);
    EXPECT_FALSE(Probe::hasFreshLiveTrack(*model)) << "90.0 s";
}

TEST_F(ModelSocketTest, ALiveTrackIsNotFreshOnceTheConnectionDrops) {
    startConnected(RadioStation::zofra);
    frame(trackFrame(u"zofra_be"_qs, u"Song"_qs));
    failSocket(u"x"_qs);
    EXPECT_FALSE(Probe::hasFreshLiveTrack(*model));
    queue.advance(5s);
    EXPECT_FALSE(Probe::hasFreshLiveTrack(*model)) << "connecting";
    frame(u"o"_qs);
    EXPECT_TRUE(Probe::hasFreshLiveTrack(*model)) << "connected again, and the track is still young";
}

TEST_F(ModelSocketTest, AClockThatGoesBackKeepsTheSocket) {
    auto now = TimePoint(1'700'000'000s);
    model = std::make_unique<RadioViewModel>(
        RadioStation::zofra, http, [&now] { return now; }, sockets.maker(),
        RadioViewModel::Environment{
            .mainQueue = queue, .output = output, .languages = languages, .hosts = hosts});
    model->startWebSocket();
    model->startPolling();
    now -= 3600s;
    queue.advance(15s);
    EXPECT_EQ(sockets.sockets.size(), 1U);
}

TEST_F(ModelSocketTest, WithoutASocketTheNextAttemptComesAfterTheSilenceLimit) {
    int asked = 0;
    model = std::make_unique<RadioViewModel>(
        RadioStation::zofra, http, queue.clock(),
        [&asked](const QUrl&) {
            ++asked;
            return nullptr;
        },
        RadioViewModel::Environment{
            .mainQueue = queue, .output = output, .languages = languages, .hosts = hosts});
    model->startWebSocket();
    model->startPolling();
    EXPECT_EQ(asked, 1);
    queue.advance(44s);
    EXPECT_EQ(asked, 1);
    queue.advance(1s);
    EXPECT_EQ(asked, 2);
}

} // namespace
} // namespace zofra::test
