// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/DelegateTest.h"

namespace zofra::test {
namespace {

class AppDelegateWindowTest : public DelegateTest {};

TEST_F(AppDelegateWindowTest, IsMadeTitledStyledCentredActivatedAndShown) {
    launch();
    delegate->showAboutWindow();
    EXPECT_EQ(record, QStringList()) << "not in place";
    queue.drain();
    EXPECT_EQ(record, (QStringList{u"window made"_qs, u"window title Zofra Zofra"_qs, u"window style 3"_qs,
                                   u"window center"_qs, u"activate ignoring others"_qs, u"window front"_qs}));
    EXPECT_EQ(delegate->aboutWindow(), windows.last);
}

TEST_F(AppDelegateWindowTest, ThePanelGetsTheSharedObjectsAndTheVersion) {
    bundle = {{u"CFBundleShortVersionString"_qs, u"3.1"_qs}};
    launch();
    delegate->showAboutWindow();
    queue.drain();
    const PopupPanelContent& content = windows.last->content;
    EXPECT_EQ(content.version, u"3.1 (Build 1)"_qs);
    EXPECT_EQ(&content.objects.viewModel, &delegate->viewModel());
    EXPECT_EQ(&content.objects.player, player.get());
    EXPECT_EQ(&content.objects.sonos, sonos.get());
    EXPECT_EQ(&content.objects.languages, languages.get());
    const int before = item().refreshes;
    content.controls.toggle();
    EXPECT_EQ(item().refreshes, before + 1) << "an act is shown at once";
}

TEST_F(AppDelegateWindowTest, AskedForTwiceItComesForward) {
    launch();
    delegate->showAboutWindow();
    delegate->showAboutWindow();
    queue.drain();
    EXPECT_EQ(windows.made, 1);
    EXPECT_EQ(record.mid(record.size() - 2),
              (QStringList{u"window front"_qs, u"activate ignoring others"_qs}));
}

TEST_F(AppDelegateWindowTest, ClosedByItsButtonItIsForgottenAndMadeAnewNextTime) {
    launch();
    delegate->showAboutWindow();
    queue.drain();
    windows.last->closeByButton();
    EXPECT_EQ(delegate->aboutWindow(), nullptr);
    delegate->showAboutWindow();
    queue.drain();
    EXPECT_EQ(windows.made, 2);
    EXPECT_EQ(record.count(u"window gone"_qs), 1);
}

TEST_F(AppDelegateWindowTest, ClosedByThePanelItIsClosedForgottenAndOnlyLaterDestroyed) {
    launch();
    delegate->showAboutWindow();
    queue.drain();
    record.clear();
    windows.last->content.onClose();
    EXPECT_EQ(record, QStringList{u"window close"_qs}) << "the panel is still on the stack";
    EXPECT_EQ(delegate->aboutWindow(), nullptr);
    queue.drain();
    EXPECT_EQ(record, (QStringList{u"window close"_qs, u"window gone"_qs}));
}

TEST_F(AppDelegateWindowTest, ClosingTwiceIsHarmless) {
    launch();
    delegate->showAboutWindow();
    queue.drain();
    const auto onClose = windows.last->content.onClose;
    onClose();
    onClose();
    queue.drain();
    EXPECT_EQ(record.count(u"window close"_qs), 1);
}

TEST_F(AppDelegateWindowTest, AnotherWindowThatClosesIsIgnored) {
    launch();
    delegate->showAboutWindow();
    queue.drain();
    const FakePopupWindow other(record, windows.last->content);
    delegate->windowWillClose(other);
    EXPECT_EQ(delegate->aboutWindow(), windows.last);
}

TEST_F(AppDelegateWindowTest, WithoutWindowsNothingHappens) {
    class NoWindows final : public PopupWindowFactory {
    public:
        std::unique_ptr<PopupWindow> makeWindow(PopupPanelContent) override { return nullptr; }
    } none;
    make();
    AppDelegate::Environment environment{defaults,      queue,           output,    hosts, http,
                                         queue.clock(), sockets.maker(), statusBar, none,  application,
                                         workspace,     bundle,          {},        {},    {}};
    environment.languages = [this]() -> LanguageManager& { return *languages; };
    environment.player = [this]() -> RadioPlayer& { return *player; };
    environment.sonos = [this]() -> SonosManager& { return *sonos; };
    AppDelegate headless(std::move(environment));
    headless.showAboutWindow();
    queue.drain();
    EXPECT_EQ(record, QStringList());
}

TEST_F(AppDelegateWindowTest, QuittingSilencesDropsStopsTheSpeakersAndThenTerminates) {
    launch();
    delegate->togglePlayRadio();
    player->isBuffering = true;
    std::vector<bool> told;
    player->onPlaybackStateChanged = [&](bool playing) { told.push_back(playing); };
    sonos->isSonosPlaying = true;
    record.clear();
    delegate->quit();
    EXPECT_EQ(record, (QStringList{u"1 pause"_qs, u"1 item none"_qs, u"1 dropped"_qs, u"terminate"_qs}));
    EXPECT_FALSE(player->isPlaying);
    EXPECT_FALSE(player->isBuffering);
    EXPECT_EQ(told, std::vector<bool>{false});
    EXPECT_EQ(player->player, nullptr);
    EXPECT_FALSE(sonos->isSonosPlaying) << "stopAllSonos came before the end";
}

TEST_F(AppDelegateWindowTest, QuittingWithNothingPlayingTerminatesAllTheSame) {
    launch();
    delegate->quit();
    EXPECT_EQ(record, QStringList{u"terminate"_qs});
}

} // namespace
} // namespace zofra::test
