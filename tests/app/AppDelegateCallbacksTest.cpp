// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/DelegateTest.h"
#include "tests/metadata/Frames.h"

namespace zofra::test {
namespace {

class AppDelegateCallbacksTest : public DelegateTest {
protected:
    int refreshes() { return item().refreshes; }
};

TEST_F(AppDelegateCallbacksTest, APlaybackChangeRedrawsInALaterTurn) {
    launch();
    const int before = refreshes();
    player->onPlaybackStateChanged(true);
    EXPECT_EQ(refreshes(), before) << "not in place";
    queue.drain();
    EXPECT_EQ(refreshes(), before + 1);
    sonos->onPlaybackStateChanged(false);
    EXPECT_EQ(refreshes(), before + 1);
    queue.drain();
    EXPECT_EQ(refreshes(), before + 2);
    sonos->onRoomsUpdated({});
    EXPECT_EQ(refreshes(), before + 2);
    queue.drain();
    EXPECT_EQ(refreshes(), before + 3);
}

TEST_F(AppDelegateCallbacksTest, AStationChangeInsideThePlayerReachesSpeakersModelAndButton) {
    launch();
    player->setStation(RadioStation::qmusic);
    EXPECT_EQ(sonos->currentStation.get(), RadioStation(RadioStation::zofra)) << "not in place";
    EXPECT_EQ(delegate->viewModel().currentStation.get(), RadioStation(RadioStation::zofra));
    queue.drain();
    EXPECT_EQ(sonos->currentStation.get(), RadioStation(RadioStation::qmusic));
    EXPECT_EQ(delegate->viewModel().currentStation.get(), RadioStation(RadioStation::qmusic));
    EXPECT_TRUE(item().title.startsWith(u"Qmusic: "_qs)) << item().title.toStdString();
}

TEST_F(AppDelegateCallbacksTest, SpeakersHearOfAStationBeforeTheModelAndTheButtonLast) {
    launch();
    QStringList order;
    const auto sonosToken = sonos->observe([&] { order << u"sonos"_qs; });
    const auto modelToken = delegate->viewModel().observe([&] {
        if (!order.contains(u"model"_qs))
            order << u"model"_qs;
    });
    record.clear();
    player->onStationChanged(RadioStation::joe);
    queue.drain();
    EXPECT_EQ(order, (QStringList{u"sonos"_qs, u"model"_qs}));
    EXPECT_EQ(record.last(), u"setToolTip"_qs);
}

TEST_F(AppDelegateCallbacksTest, ANewLanguageReplacesTheLoadingTextWhileLoading) {
    launch();
    ASSERT_TRUE(delegate->viewModel().isLoading());
    languages->setLanguage(AppLanguage::de);
    EXPECT_EQ(delegate->currentSongText(), u"Loading..."_qs) << "not in place";
    queue.drain();
    EXPECT_EQ(delegate->currentSongText(), u"Lädt..."_qs);
    EXPECT_EQ(item().title, u"Zofra: Lädt..."_qs);
}

TEST_F(AppDelegateCallbacksTest, ANewLanguageLeavesASongAloneButRedraws) {
    launch();
    // The first track ends loading.
    sockets.last().deliver(u"o"_qs);
    queue.drain();
    sockets.last().deliver(trackFrame(u"zofra_be"_qs, u"Song"_qs, u"Artist"_qs));
    queue.drain();
    ASSERT_FALSE(delegate->viewModel().isLoading());
    ASSERT_EQ(delegate->currentSongText(), u"Artist – Song"_qs);
    const int before = refreshes();
    languages->setLanguage(AppLanguage::nl);
    queue.drain();
    EXPECT_EQ(delegate->currentSongText(), u"Artist – Song"_qs);
    EXPECT_EQ(refreshes(), before + 1);
}

TEST_F(AppDelegateCallbacksTest, AnUpdateIsShownInPlaceAndThenHandedToTheMediaDisplay) {
    launch();
    const std::size_t shownBefore = nowPlaying.shown.size();
    QString titleWhenHandedOver;
    nowPlaying.whenShown = [&] { titleWhenHandedOver = item().title; };
    delegate->viewModel().onUpdate(u"Artist – Song"_qs, u"Next – One"_qs);
    EXPECT_EQ(delegate->currentSongText(), u"Artist – Song"_qs);
    EXPECT_EQ(delegate->nextSongText(), u"Next – One"_qs);
    EXPECT_EQ(item().title, u"Zofra: Artist – Song"_qs);
    ASSERT_EQ(nowPlaying.shown.size(), shownBefore + 1);
    EXPECT_EQ(nowPlaying.shown.back().title, u"Artist – Song"_qs);
    EXPECT_EQ(nowPlaying.shown.back().artist, std::nullopt);
    EXPECT_EQ(titleWhenHandedOver, u"Zofra: Artist – Song"_qs) << "the button comes first";
}

TEST_F(AppDelegateCallbacksTest, CallbacksDoNothingOnceTheDelegateIsGone) {
    launch();
    const auto languageChanged = languages->onLanguageChanged;
    const auto stationChanged = player->onStationChanged;
    const auto stateChanged = player->onPlaybackStateChanged;
    // Posted before the end, run after it.
    stateChanged(true);
    stationChanged(RadioStation::joe);
    delegate.reset();
    languageChanged();
    stationChanged(RadioStation::qmusic);
    stateChanged(false);
    sonos->onRoomsUpdated({});
    queue.drain();
    EXPECT_EQ(sonos->currentStation.get(), RadioStation(RadioStation::zofra));
}

TEST_F(AppDelegateCallbacksTest, MenuActionsDoNothingOnceTheDelegateIsGone) {
    launch();
    const Menu menu = delegate->contextMenu();
    delegate.reset();
    record.clear();
    for (const MenuItem& item : menu) {
        if (item.action)
            item.action(item);
    }
    queue.drain();
    EXPECT_EQ(record, QStringList());
}

} // namespace
} // namespace zofra::test
