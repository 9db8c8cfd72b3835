// SPDX-License-Identifier: GPL-3.0-or-later
// What the model holds at first, and what a change of the station does.
#include "tests/metadata/ModelTest.h"

namespace zofra::test {
namespace {

class ModelStationTest : public ModelTest {};

TEST_F(ModelStationTest, StartsWithTheLoadingTextAndNothingElse) {
    make(RadioStation::qmusic);
    EXPECT_EQ(model->currentStation.get(), RadioStation::qmusic);
    EXPECT_EQ(model->currentSong.get(), u"Loading..."_qs);
    EXPECT_EQ(model->nextSong.get(), std::nullopt);
    EXPECT_TRUE(model->isLoading());
    EXPECT_EQ(state(), SocketState::idle);
    EXPECT_FALSE(Probe::isPolling(*model));
    EXPECT_EQ(Probe::lastSocketActivity(*model), std::nullopt);
    EXPECT_EQ(Probe::lastLiveTrack(*model), std::nullopt);
    EXPECT_EQ(Probe::counter(*model), 0U);
    EXPECT_EQ(Probe::lastApplied(*model), 0U);
    EXPECT_TRUE(updates.empty());
    EXPECT_TRUE(http.requests.empty());
    EXPECT_TRUE(sockets.sockets.empty());
}

TEST_F(ModelStationTest, LoadingTextIsInTheLanguageOfTheMoment) {
    const std::vector<std::pair<AppLanguage, QString>> texts{{AppLanguage::en, u"Loading..."_qs},
                                                             {AppLanguage::nl, u"Laden..."_qs},
                                                             {AppLanguage::fr, u"Chargement..."_qs},
                                                             {AppLanguage::de, u"Lädt..."_qs}};
    for (const auto& [language, text] : texts) {
        languages.setCurrentLanguage(language);
        make(RadioStation::belRTL);
        EXPECT_EQ(model->currentSong.get(), text);
        model->setStation(RadioStation::radioContact);
        EXPECT_EQ(model->currentSong.get(), text);
    }
}

TEST_F(ModelStationTest, SettingTheSameOneDoesNothing) {
    startConnected(RadioStation::zofra);
    const auto requests = http.requests.size();
    const auto timers = queue.startedTimers().size();
    model->setStation(RadioStation::zofra);
    queue.drain();
    EXPECT_TRUE(updates.empty());
    EXPECT_EQ(http.requests.size(), requests);
    EXPECT_EQ(queue.startedTimers().size(), timers);
    EXPECT_EQ(sockets.sockets.size(), 1U);
    EXPECT_TRUE(sockets.last().cancels.empty());
    EXPECT_EQ(sockets.last().sent.size(), 1U);
}

TEST_F(ModelStationTest, SettingAnotherClosesTheSocketAndShowsTheLoadingText) {
    startConnected(RadioStation::zofra);
    frame(trackFrame(u"zofra_be"_qs, u"Song"_qs, u"Band"_qs, u"Later"_qs));
    ASSERT_EQ(model->nextSong.get(), u"Later"_qs);
    const auto rounds = Probe::counter(*model);
    updates.clear();

    model->setStation(RadioStation::belRTL);

    ASSERT_EQ(sockets.sockets.size(), 1U) << "no socket for a station without a live feed";
    ASSERT_EQ(sockets.last().cancels.size(), 1U);
    EXPECT_EQ(sockets.last().cancels[0].closeCode, SocketCloseCode::normalClosure);
    EXPECT_EQ(static_cast<int>(sockets.last().cancels[0].closeCode), 1000);
    EXPECT_EQ(sockets.last().cancels[0].reason, std::nullopt);
    EXPECT_EQ(model->currentStation.get(), RadioStation::belRTL);
    EXPECT_EQ(model->currentSong.get(), u"Loading..."_qs);
    EXPECT_EQ(model->nextSong.get(), std::nullopt);
    EXPECT_TRUE(model->isLoading());
    EXPECT_EQ(Probe::lastLiveTrack(*model), std::nullopt);
    EXPECT_EQ(Probe::lastApplied(*model), rounds);
    EXPECT_EQ(updates, (std::vector<Update>{{u"Loading..."_qs, std::nullopt}}));
    EXPECT_EQ(state(), SocketState::idle);
    EXPECT_TRUE(Probe::isPolling(*model));
    EXPECT_EQ(Probe::counter(*model), rounds + 1);
    EXPECT_EQ(QUrlQuery(http.requests.back().url).queryItemValue(u"rpIds"_qs), u"6"_qs);
}

TEST_F(ModelStationTest, SettingAnotherLiveOneConnectsAtOnce) {
    startConnected(RadioStation::zofra);
    model->setStation(RadioStation::joe);
    EXPECT_EQ(state(), SocketState::connecting);
    ASSERT_EQ(sockets.sockets.size(), 2U);
    EXPECT_EQ(sockets.sockets[0]->cancels.size(), 1U);
    EXPECT_EQ(sockets.last().resumes, 1);
    frame(u"o"_qs);
    EXPECT_TRUE(sockets.last().sentText(0).contains(u"joe_fm"_qs));
}

TEST_F(ModelStationTest, SettingAnotherTellsObserversBeforeTheFieldsChange) {
    start(RadioStation::zofra);
    std::vector<RadioStation> seen;
    const auto token = model->observe([&] { seen.push_back(model->currentStation); });
    model->setStation(RadioStation::joe);
    ASSERT_GE(seen.size(), 3U) << "station, current and next song";
    EXPECT_EQ(seen.front(), RadioStation::zofra);
}

TEST_F(ModelStationTest, SettingAnotherStartsTheFifteenSecondsAnew) {
    start(RadioStation::belRTL);
    queue.advance(10s);
    model->setStation(RadioStation::radioContact);
    EXPECT_EQ(http.requests.size(), 2U);
    queue.advance(14999ms);
    EXPECT_EQ(http.requests.size(), 2U);
    queue.advance(1ms);
    EXPECT_EQ(http.requests.size(), 3U);
}

TEST_F(ModelStationTest, WorksWithoutAListener) {
    make(RadioStation::zofra);
    model->onUpdate = nullptr;
    model->setStation(RadioStation::belRTL);
    answer(200, onAir(u"6"_qs, u"Song"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Song"_qs);
}

TEST_F(ModelStationTest, AListenerMaySetAStationWhileBeingTold) {
    start(RadioStation::zofra);
    model->onUpdate = [this](const QString& current, const std::optional<QString>& next) {
        updates.push_back({current, next});
        model->setStation(RadioStation::joe);
    };
    model->setStation(RadioStation::belRTL);
    queue.drain();
    EXPECT_EQ(model->currentStation.get(), RadioStation::joe);
    EXPECT_EQ(state(), SocketState::connecting);
    EXPECT_EQ(sockets.sockets.size(), 2U);
    EXPECT_EQ(updates.size(), 2U);
}

TEST_F(ModelStationTest, AnswerOfTheOldStationIsDropped) {
    start(RadioStation::radioContact);
    const auto old = takeRequest();
    model->setStation(RadioStation::belRTL);
    updates.clear();
    finish(old, onAir(u"1"_qs, u"Old"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Loading..."_qs);
    EXPECT_TRUE(updates.empty());
}

TEST_F(ModelStationTest, AnswerOfTheOldStationIsStaleEvenAfterComingBackToIt) {
    start(RadioStation::radioContact);
    const auto old = takeRequest();
    model->setStation(RadioStation::belRTL);
    model->setStation(RadioStation::radioContact);
    updates.clear();
    finish(old, onAir(u"1"_qs, u"Old"_qs));
    EXPECT_EQ(model->currentSong.get(), u"Loading..."_qs);
    EXPECT_TRUE(updates.empty());
}

} // namespace
} // namespace zofra::test
