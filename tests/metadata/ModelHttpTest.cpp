// SPDX-License-Identifier: GPL-3.0-or-later
// Rounds of HTTP requests: what is asked, what is applied, and what comes too late.
#include "tests/metadata/ModelTest.h"

#include <QTemporaryFile>

#include <limits>
#include <tuple>

namespace zofra::test {
namespace {

class ModelHttpTest : public ModelTest {
protected:
    bool isOnAirRequest(const HttpRequest& request) const { return request.url.host() == hosts.onAirHost(); }
    bool isScraperRequest(const HttpRequest& request) const {
        return request.url.host() == hosts.scraperHost();
    }
};

TEST_F(ModelHttpTest, AsksTheOnAirServiceForTheStation) {
    start(RadioStation::zofra);
    ASSERT_EQ(http.requests.size(), 1U);
    const auto& request = http.requests[0];
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.url, QUrl(u"https://"_qs + hosts.onAirHost() + u"/056/qp/v3/onair?rpIds=5067"_qs));
    EXPECT_EQ(request.headers,
              (std::vector<std::pair<QByteArray, QByteArray>>{{"User-Agent", "Mozilla/5.0"}}));
    EXPECT_EQ(request.cachePolicy, HttpRequest::CachePolicy::ignoreLocalAndRemote);
    EXPECT_EQ(request.timeout, 6000ms);
    EXPECT_EQ(request.maxBodyBytes, 1024U * 1024U);
    EXPECT_TRUE(request.body.isEmpty());
}

class OnAirOfEveryStationTest
    : public ModelTest,
      public testing::WithParamInterface<std::tuple<RadioStation::Case, const char*>> {};

TEST_P(OnAirOfEveryStationTest, AsksWithItsId) {
    const auto [station, id] = GetParam();
    start(station);
    EXPECT_EQ(http.requests.at(0).url.query(), u"rpIds="_qs + QString::fromLatin1(id));
    answer(200, onAir(QString::fromLatin1(id), u"Song"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Song"_qs);
}

INSTANTIATE_TEST_SUITE_P(
    Stations, OnAirOfEveryStationTest,
    testing::Values(std::tuple(RadioStation::zofra, "5067"), std::tuple(RadioStation::qmusic, "5050"),
                    std::tuple(RadioStation::joe, "5051"), std::tuple(RadioStation::zofraClassX, "5077"),
                    std::tuple(RadioStation::radioContact, "1"), std::tuple(RadioStation::belRTL, "6"),
                    std::tuple(RadioStation::insideRadio, "1011"),
                    std::tuple(RadioStation::sudRadioBelgique, "154"),
                    std::tuple(RadioStation::sudRadioHainaut, "1108")));

TEST_F(ModelHttpTest, APollComesEveryFifteenSeconds) {
    start(RadioStation::belRTL);
    EXPECT_EQ(http.requests.size(), 1U);
    queue.advance(14999ms);
    EXPECT_EQ(http.requests.size(), 1U);
    queue.advance(1ms);
    EXPECT_EQ(http.requests.size(), 2U);
    queue.advance(30s);
    EXPECT_EQ(http.requests.size(), 4U);
    EXPECT_EQ(Probe::counter(*model), 4U);
}

TEST_F(ModelHttpTest, StartingToPollAgainReplacesThePoll) {
    start(RadioStation::belRTL);
    queue.advance(10s);
    model->startPolling();
    queue.advance(10s);
    EXPECT_EQ(http.requests.size(), 1U);
    queue.advance(5s);
    EXPECT_EQ(http.requests.size(), 2U);
}

TEST_F(ModelHttpTest, AnAnswerIsAppliedAndTold) {
    start(RadioStation::belRTL);
    answer(200, onAir(u"6"_qs, u"Song"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Song"_qs);
    EXPECT_EQ(model->nextSong.get(), std::nullopt);
    EXPECT_FALSE(model->isLoading());
    EXPECT_EQ(updates, (std::vector<Update>{{u"Song"_qs, std::nullopt}}));
    EXPECT_EQ(Probe::lastApplied(*model), 1U);
}

TEST_F(ModelHttpTest, AnsweringHappensOnTheMainThreadOnly) {
    start(RadioStation::belRTL);
    http.answer(200, onAir(u"6"_qs, u"Song"_qs));
    EXPECT_TRUE(updates.empty()) << "posted, not done in place";
    queue.drain();
    EXPECT_EQ(updates.size(), 1U);
}

TEST_F(ModelHttpTest, TheItemIsChosenByTheModelsClock) {
    start(RadioStation::belRTL);
    // The clock stands at 1 700 000 000.
    const QByteArray body =
        R"({"results":{"6":[{"song":true,"name":"Old","startTime":1699999000,"stopTime":1699999999},
        {"song":true,"name":"Now","startTime":"1700000000","stopTime":"1700000200"},
        {"song":true,"name":"Later","startTime":1700000201}]}})";
    answer(200, body);
    EXPECT_EQ(model->currentSong.get(), u"Now"_qs);
    queue.advance(255s);
    while (!http.open.empty())
        answer(200, body);
    EXPECT_EQ(model->currentSong.get(), u"Later"_qs);
}

TEST_F(ModelHttpTest, AJsonpAnswerIsAccepted) {
    start(RadioStation::belRTL);
    answer(200, "cb.x(" + onAir(u"6"_qs, u"Song"_qs) + ");");
    EXPECT_EQ(model->currentSong.get(), u"Song"_qs);
}

TEST_F(ModelHttpTest, EveryStatusOfSuccessCounts) {
    start(RadioStation::belRTL);
    answer(299, onAir(u"6"_qs, u"Song"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Song"_qs);
}

TEST_F(ModelHttpTest, WithoutATextTheStationsNameEndsTheLoading) {
    start(RadioStation::belRTL);
    answer(200, emptyOnAir(u"6"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Bel RTL"_qs);
    EXPECT_FALSE(model->isLoading());
    EXPECT_EQ(Probe::lastApplied(*model), 1U);
    EXPECT_EQ(http.requests.size(), 1U) << "no failure, no second request";
}

TEST_F(ModelHttpTest, WithoutATextALaterRoundLeavesTheTexts) {
    start(RadioStation::belRTL);
    answer(200, onAir(u"6"_qs, u"Song"_qs));
    queue.advance(15s);
    updates.clear();
    answer(200, emptyOnAir(u"6"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Song"_qs);
    EXPECT_TRUE(updates.empty());
    EXPECT_EQ(Probe::lastApplied(*model), 1U);
}

TEST_F(ModelHttpTest, AFreshLiveTrackWins) {
    startConnected(RadioStation::zofra);
    frame(trackFrame(u"zofra_be"_qs, u"Live"_qs, std::nullopt, u"Next"_qs));
    http.open.clear();
    model->fetchMetadata();
    const auto applied = Probe::lastApplied(*model);
    answer(200, onAir(u"5067"_qs, u"Polled"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Live"_qs);
    EXPECT_EQ(model->nextSong.get(), u"Next"_qs);
    EXPECT_EQ(Probe::lastApplied(*model), applied);
}

TEST_F(ModelHttpTest, AfterNinetySecondsTheHttpTextTakesOver) {
    startConnected(RadioStation::zofra);
    http.open.clear();
    frame(trackFrame(u"zofra_be"_qs, u"Live"_qs, std::nullopt, u"Next"_qs));
    for (int i = 0; i < 6; ++i) {
        queue.advance(14999ms);
        frame(u"h"_qs);
        queue.advance(1ms);
        ASSERT_EQ(http.open.size(), 1U);
        if (i < 5)
            answer(200, onAir(u"5067"_qs, u"Polled"_qs));
    }
    EXPECT_EQ(model->currentSong.get(), u"Live"_qs);
    answer(200, onAir(u"5067"_qs, u"Polled"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Polled"_qs) << "90.0 s after the live track";
    EXPECT_EQ(model->nextSong.get(), std::nullopt);
}

TEST_F(ModelHttpTest, WhileTheSocketIsDownTheHttpTextTakesOverAtOnce) {
    startConnected(RadioStation::zofra);
    http.open.clear();
    frame(trackFrame(u"zofra_be"_qs, u"Live"_qs));
    failSocket(u"x"_qs);
    queue.advance(5s);
    model->fetchMetadata();
    answer(200, onAir(u"5067"_qs, u"Polled"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Polled"_qs);
}

TEST_F(ModelHttpTest, TheNextSongStaysWhileTheCurrentTextDoes) {
    startConnected(RadioStation::zofra);
    http.open.clear();
    frame(trackFrame(u"zofra_be"_qs, u"Song"_qs, std::nullopt, u"Next"_qs));
    failSocket(u"x"_qs);
    updates.clear();
    model->fetchMetadata();
    answer(200, onAir(u"5067"_qs, u"Song"_qs));
    EXPECT_EQ(model->nextSong.get(), u"Next"_qs);
    model->fetchMetadata();
    answer(200, onAir(u"5067"_qs, u"Other"_qs));
    EXPECT_EQ(model->nextSong.get(), std::nullopt);
    EXPECT_EQ(updates, (std::vector<Update>{{u"Song"_qs, u"Next"_qs}, {u"Other"_qs, std::nullopt}}));
}

TEST_F(ModelHttpTest, AnOlderRoundDoesNotOverwriteALaterOne) {
    start(RadioStation::belRTL);
    model->fetchMetadata();
    const auto first = takeRequest();
    const auto second = takeRequest();
    finish(second, onAir(u"6"_qs, u"Second"_qs));
    finish(first, onAir(u"6"_qs, u"First"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Second"_qs);
    EXPECT_EQ(updates.size(), 1U);
}

TEST_F(ModelHttpTest, RoundsInOrderAreAllApplied) {
    start(RadioStation::belRTL);
    model->fetchMetadata();
    answer(200, onAir(u"6"_qs, u"First"_qs));
    answer(200, onAir(u"6"_qs, u"Second"_qs));
    EXPECT_EQ(updates, (std::vector<Update>{{u"First"_qs, std::nullopt}, {u"Second"_qs, std::nullopt}}));
}

TEST_F(ModelHttpTest, ALiveTrackMakesRoundsUnderWayStale) {
    startConnected(RadioStation::zofra);
    const auto old = takeRequest();
    frame(trackFrame(u"zofra_be"_qs, u"Live"_qs));
    failSocket(u"x"_qs);
    ASSERT_FALSE(Probe::hasFreshLiveTrack(*model));
    finish(old, onAir(u"5067"_qs, u"Old"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Live"_qs);
}

TEST_F(ModelHttpTest, FailureOfALiveStationAsksTheScraperAtOnceAndRetriesAfterTwoSeconds) {
    start(RadioStation::zofra);
    failRequest();
    ASSERT_EQ(http.requests.size(), 2U);
    EXPECT_TRUE(isScraperRequest(http.requests[1]));
    queue.advance(1999ms);
    EXPECT_EQ(http.requests.size(), 2U);
    queue.advance(1ms);
    ASSERT_EQ(http.requests.size(), 3U);
    EXPECT_TRUE(isOnAirRequest(http.requests[2]));
    EXPECT_EQ(http.requests[2].url, http.requests[0].url);
    EXPECT_EQ(Probe::counter(*model), 1U) << "the same round";
}

TEST_F(ModelHttpTest, FailureOfTheRetryAsksTheScraperOnly) {
    start(RadioStation::zofra);
    failRequest();
    queue.advance(2s);
    const auto scraper = takeRequest();
    EXPECT_TRUE(isScraperRequest(scraper.request));
    failRequest();
    ASSERT_EQ(http.requests.size(), 4U);
    EXPECT_TRUE(isScraperRequest(http.requests[3]));
    queue.advance(12s);
    EXPECT_EQ(http.requests.size(), 4U) << "at most two on-air requests a round";
}

TEST_F(ModelHttpTest, FailureOfAStationWithoutAFeedIsOnlyRetried) {
    start(RadioStation::belRTL);
    failRequest();
    EXPECT_EQ(http.requests.size(), 1U);
    queue.advance(2s);
    ASSERT_EQ(http.requests.size(), 2U);
    EXPECT_TRUE(isOnAirRequest(http.requests[1]));
    failRequest();
    queue.advance(10s);
    EXPECT_EQ(http.requests.size(), 2U);
    EXPECT_EQ(model->currentSong.get(), u"Loading..."_qs);
    EXPECT_TRUE(output.lines.empty()) << "nothing is logged";
}

TEST_F(ModelHttpTest, TheRetrysAnswerIsApplied) {
    start(RadioStation::belRTL);
    failRequest();
    queue.advance(2s);
    answer(200, onAir(u"6"_qs, u"Song"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Song"_qs);
}

class OnAirFailureTest : public ModelTest, public testing::WithParamInterface<std::pair<int, QByteArray>> {};

TEST_P(OnAirFailureTest, LeadsToTheScraper) {
    start(RadioStation::zofra);
    answer(GetParam().first, GetParam().second);
    ASSERT_EQ(http.requests.size(), 2U);
    EXPECT_EQ(http.requests[1].url.host(), hosts.scraperHost());
    EXPECT_EQ(model->currentSong.get(), u"Loading..."_qs);
}

const QByteArray goodAnswer = R"({"results":{"5067":[{"name":"Song","song":true}]}})";
INSTANTIATE_TEST_SUITE_P(Answers, OnAirFailureTest,
                         testing::Values(std::pair(199, goodAnswer), std::pair(300, goodAnswer),
                                         std::pair(404, goodAnswer), std::pair(500, goodAnswer),
                                         std::pair(0, goodAnswer), std::pair(200, QByteArray()),
                                         std::pair(200, QByteArray("<html>")),
                                         std::pair(200, QByteArray("[]")),
                                         std::pair(200, QByteArray(R"({"results":null})")),
                                         std::pair(200, QByteArray(R"({"results":{"6":[]}})")),
                                         std::pair(200, QByteArray(R"({"results":{"5067":[1]}})")),
                                         std::pair(200, QByteArray("{\"results\":{\"5067\":[]}}\xFF"))));

TEST_F(ModelHttpTest, FailureOfAnOldStationDoesNothing) {
    start(RadioStation::zofra);
    const auto old = takeRequest();
    model->setStation(RadioStation::joe);
    const auto requests = http.requests.size();
    old.completion(failure(HttpError{}));
    queue.advance(3s);
    EXPECT_EQ(http.requests.size(), requests);
}

TEST_F(ModelHttpTest, BadAnswerOfAnOldStationDoesNothing) {
    start(RadioStation::zofra);
    const auto old = takeRequest();
    model->setStation(RadioStation::joe);
    const auto requests = http.requests.size();
    finish(old, "garbage");
    queue.advance(3s);
    EXPECT_EQ(http.requests.size(), requests);
}

TEST_F(ModelHttpTest, FailureOfAStaleRoundDoesNothing) {
    start(RadioStation::zofra);
    model->fetchMetadata();
    const auto first = takeRequest();
    answer(200, onAir(u"5067"_qs, u"Second"_qs));
    first.completion(failure(HttpError{}));
    queue.advance(3s);
    EXPECT_EQ(http.requests.size(), 2U);
}

TEST_F(ModelHttpTest, RetryIsNotSentOnceTheRoundIsStale) {
    start(RadioStation::belRTL);
    failRequest();
    model->fetchMetadata();
    answer(200, onAir(u"6"_qs, u"Newer"_qs));
    queue.advance(3s);
    EXPECT_EQ(http.requests.size(), 2U);
}

TEST_F(ModelHttpTest, RetryIsNotSentOnceTheScraperHasAnswered) {
    start(RadioStation::zofra);
    failRequest();
    answer(200, scraped(u"Scraped"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Scraped"_qs);
    queue.advance(3s);
    EXPECT_EQ(http.requests.size(), 2U);
}

TEST_F(ModelHttpTest, RetryIsNotSentForAnOldStation) {
    start(RadioStation::belRTL);
    failRequest();
    model->setStation(RadioStation::radioContact);
    queue.advance(3s);
    ASSERT_EQ(http.requests.size(), 2U);
    EXPECT_EQ(http.requests[1].url.query(), u"rpIds=1"_qs);
}

TEST_F(ModelHttpTest, ScraperRequestLooksLikeTheOther) {
    start(RadioStation::zofraClassX);
    failRequest();
    ASSERT_EQ(http.requests.size(), 2U);
    const auto& request = http.requests[1];
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.url, QUrl(u"https://"_qs + hosts.scraperHost() + u"/be.zofraclassx"_qs));
    EXPECT_EQ(request.headers,
              (std::vector<std::pair<QByteArray, QByteArray>>{{"User-Agent", "Mozilla/5.0"}}));
    EXPECT_EQ(request.cachePolicy, HttpRequest::CachePolicy::ignoreLocalAndRemote);
    EXPECT_EQ(request.timeout, 6000ms);
    EXPECT_EQ(request.maxBodyBytes, 1024U * 1024U);
}

TEST_F(ModelHttpTest, ScraperOfEveryLiveStation) {
    for (const auto& [station, path] :
         {std::pair(RadioStation::zofra, u"/be.zofra"_qs), std::pair(RadioStation::qmusic, u"/be.qmusic"_qs),
          std::pair(RadioStation::joe, u"/be.joe"_qs),
          std::pair(RadioStation::zofraClassX, u"/be.zofraclassx"_qs)}) {
        http.requests.clear();
        http.open.clear();
        start(station);
        failRequest();
        EXPECT_EQ(http.requests.at(1).url.path(), path);
    }
}

TEST_F(ModelHttpTest, ScraperWithoutATextShowsTheNameOnlyWhileLoading) {
    start(RadioStation::qmusic);
    failRequest();
    answer(200, "");
    EXPECT_EQ(model->currentSong.get(), u"Qmusic"_qs);
    EXPECT_FALSE(model->isLoading());
    updates.clear();
    model->fetchMetadata();
    failRequest();
    answer(200, "{\"title\":\"\"}");
    EXPECT_TRUE(updates.empty());
    EXPECT_EQ(Probe::lastApplied(*model), 1U);
}

class ScraperFailureTest : public ModelTest,
                           public testing::WithParamInterface<std::pair<int, QByteArray>> {};

TEST_P(ScraperFailureTest, IsDroppedSilently) {
    start(RadioStation::qmusic);
    failRequest();
    answer(GetParam().first, GetParam().second);
    EXPECT_EQ(model->currentSong.get(), u"Loading..."_qs);
    EXPECT_TRUE(updates.empty());
    EXPECT_TRUE(output.lines.empty());
    EXPECT_EQ(http.requests.size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Answers, ScraperFailureTest,
                         testing::Values(std::pair(404, QByteArray(R"({"title":"X"})")),
                                         std::pair(300, QByteArray(R"({"title":"X"})")),
                                         std::pair(199, QByteArray(R"({"title":"X"})")),
                                         std::pair(200, QByteArray("{\"title\":\"caf\xE9\"}"))));

TEST_F(ModelHttpTest, ScraperTransportErrorIsDropped) {
    start(RadioStation::qmusic);
    failRequest();
    failRequest();
    EXPECT_TRUE(model->isLoading());
    queue.advance(2s);
    EXPECT_EQ(http.requests.size(), 3U) << "the retry of the on-air service comes all the same";
}

TEST_F(ModelHttpTest, ScraperOfAnOldStationIsDropped) {
    start(RadioStation::qmusic);
    failRequest();
    const auto scraper = takeRequest();
    model->setStation(RadioStation::joe);
    updates.clear();
    finish(scraper, scraped(u"Old"_qs));
    EXPECT_TRUE(updates.empty());
}

TEST_F(ModelHttpTest, ScraperGivesWayToAFreshLiveTrack) {
    startConnected(RadioStation::qmusic);
    failRequest();
    const auto scraper = takeRequest();
    frame(trackFrame(u"qmusic_be"_qs, u"Live"_qs));
    finish(scraper, scraped(u"Scraped"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Live"_qs);
}

TEST_F(ModelHttpTest, ScraperOfAnOlderRoundIsStale) {
    start(RadioStation::qmusic);
    failRequest();
    const auto scraper = takeRequest();
    model->fetchMetadata();
    answer(200, onAir(u"5050"_qs, u"Newer"_qs));
    finish(scraper, scraped(u"Older"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Newer"_qs);
}

TEST_F(ModelHttpTest, ScraperAfterTheRetrysAnswerIsStale) {
    start(RadioStation::qmusic);
    failRequest();
    const auto scraper = takeRequest();
    queue.advance(2s);
    answer(200, onAir(u"5050"_qs, u"Song"_qs));
    finish(scraper, scraped(u"Scraped"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Song"_qs) << "the same round is not applied twice";
}

TEST_F(ModelHttpTest, TitleNeverGoesBackWhateverTheOrderOfAnswers) {
    start(RadioStation::belRTL);
    std::vector<FakeHttpSession::Exchange> rounds{takeRequest()};
    for (int i = 1; i < 6; ++i) {
        model->fetchMetadata();
        rounds.push_back(takeRequest());
    }
    for (const std::size_t round : {3U, 0U, 1U, 5U, 4U, 2U})
        finish(rounds[round], onAir(u"6"_qs, QString::number(round)));
    EXPECT_EQ(updates, (std::vector<Update>{{u"3"_qs, std::nullopt}, {u"5"_qs, std::nullopt}}));
}

TEST_F(ModelHttpTest, ServiceHostsMayCarryAPort) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write("[metadata]\non_air=127.0.0.1:8443\nscraper=localhost:8444\nlive_socket=127.0.0.1:8445\n");
    file.close();
    ASSERT_TRUE(hosts.overlay(file.fileName(), ServiceHosts::MissingFile::isRefused));
    start(RadioStation::zofra);
    failRequest();
    EXPECT_EQ(http.requests.at(0).url, QUrl(u"https://127.0.0.1:8443/056/qp/v3/onair?rpIds=5067"_qs));
    EXPECT_EQ(http.requests.at(1).url, QUrl(u"https://localhost:8444/be.zofra"_qs));
    EXPECT_EQ(sockets.last().url.authority(), u"127.0.0.1:8445"_qs);
}

TEST_F(ModelHttpTest, RunningOutOfNumbersIsFatal) {
    make(RadioStation::belRTL);
    Probe::setCounter(*model, std::numeric_limits<std::uint64_t>::max());
    EXPECT_DEATH(model->fetchMetadata(), "No number is left");
}

} // namespace
} // namespace zofra::test
