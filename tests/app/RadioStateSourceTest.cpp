// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RadioStateSource.h"

#include "tests/app/DelegateTest.h"

namespace zofra::test {
namespace {

class RadioStateSourceTest : public DelegateTest {
protected:
    void SetUp() override {
        launch();
        source = std::make_unique<RadioStateSource>(
            queue, RadioObjects{delegate->viewModel(), *player, *sonos, *languages});
        source->touch();
        queue.drain();
        token = source->observe([this](const RadioState& state) { told.push_back(state); });
    }

    std::unique_ptr<RadioStateSource> source;
    ObservationToken token;
    std::vector<RadioState> told;
};

TEST_F(RadioStateSourceTest, TellsManyChangesOfATurnOnceInTheNext) {
    player->volume = 0.1F;
    player->volume = 0.2F;
    sonos->isScanning = true;
    EXPECT_TRUE(told.empty()) << "not in place";
    EXPECT_EQ(source->now().volume, 0.2F);
    queue.drain();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].volume, 0.2F);
    EXPECT_TRUE(told[0].isScanning);
}

TEST_F(RadioStateSourceTest, TellsNothingWhereNothingDiffers) {
    player->volume = player->volume.get();
    source->touch();
    queue.drain();
    EXPECT_TRUE(told.empty());
    player->volume = 0.1F;
    player->volume = 0.8F;
    queue.drain();
    EXPECT_TRUE(told.empty()) << "the same as before";
}

TEST_F(RadioStateSourceTest, ReadsTheStateAfterTheChange) {
    std::optional<float> before;
    std::optional<float> after;
    const auto early = player->observe([&] { before = player->volume; });
    const auto late = player->observeChanged([&] { after = player->volume; });
    player->volume = 0.3F;
    EXPECT_EQ(before, 0.8F);
    EXPECT_EQ(after, 0.3F);
}

TEST_F(RadioStateSourceTest, TheLoadingTextFollowsTheLanguageUntilSomethingIsKnown) {
    ASSERT_TRUE(delegate->viewModel().isLoading());
    languages->setLanguage(AppLanguage::de);
    EXPECT_EQ(source->now().currentSong, u"Lädt..."_qs);
    queue.drain();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].currentSong, u"Lädt..."_qs);
}

TEST_F(RadioStateSourceTest, SaysWhatThePlayerHereDoesWhereverTheSoundGoes) {
    using Here = RadioState::LocalPlayback;
    EXPECT_EQ(source->now().localPlayback, Here::stopped);
    player->play();
    player->isBuffering = true;
    EXPECT_EQ(source->now().localPlayback, Here::playing);
    EXPECT_TRUE(source->now().isBuffering);
    sonos->activeTarget = AudioOutputTarget::sonosEverywhere();
    EXPECT_FALSE(source->now().isPlaying) << "the rooms are silent";
    EXPECT_FALSE(source->now().isBuffering);
    player->stop();
    EXPECT_EQ(source->now().localPlayback, Here::paused);
    player->drop();
    EXPECT_EQ(source->now().localPlayback, Here::stopped);
    sonos->isSonosPlaying = true;
    EXPECT_TRUE(source->now().isPlaying);
}

TEST_F(RadioStateSourceTest, EndsWithoutAWord) {
    player->volume = 0.3F;
    source.reset();
    queue.drain();
    player->volume = 0.4F;
    queue.drain();
    EXPECT_TRUE(told.empty());
}

TEST_F(RadioStateSourceTest, OfTheNextSongNothingIsShownWhenItIsEmpty) {
    RadioState state;
    EXPECT_EQ(state.upNext(), std::nullopt);
    state.nextSong = QString();
    EXPECT_EQ(state.upNext(), std::nullopt);
    state.nextSong = u"Next – One"_qs;
    EXPECT_EQ(state.upNext(), u"Next – One"_qs);
}

} // namespace
} // namespace zofra::test
