// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/DelegateTest.h"

namespace zofra::test {
namespace {

class AppDelegateStartTest : public DelegateTest {};

TEST_F(AppDelegateStartTest, ConstructionMakesModelThenPlayerThenSpeakersAndShowsNothing) {
    discovers = true;
    make();
    const auto first = [this](const char* key) {
        return std::find(defaults.reads.begin(), defaults.reads.end(), QString::fromLatin1(key));
    };
    // The station for the model first of all, the volume by the player, the rooms by the manager.
    ASSERT_FALSE(defaults.reads.empty());
    EXPECT_EQ(defaults.reads.front(), QLatin1String(RadioStation::savedStationKey));
    EXPECT_LT(first("zofra_selected_station"), first("app_language"));
    EXPECT_LT(first("app_language"), first("zofra_radio_volume"));
    EXPECT_LT(first("zofra_radio_volume"), first("cached_sonos_rooms"));
    EXPECT_NE(first("cached_sonos_rooms"), defaults.reads.end());
    EXPECT_EQ(delegate->statusItem(), nullptr);
    EXPECT_EQ(delegate->aboutWindow(), nullptr);
    EXPECT_EQ(delegate->nextSongText(), std::nullopt);
    EXPECT_TRUE(sockets.sockets.empty());
    EXPECT_TRUE(record.isEmpty());
}

TEST_F(AppDelegateStartTest, TheSongTextBeginsAsTheLoadingTextOfTheLanguage) {
    preferredLanguages = {QStringLiteral("fr_BE")};
    EXPECT_EQ(make().currentSongText(), QStringLiteral("Chargement..."));
}

TEST_F(AppDelegateStartTest, TheSavedStationGoesToTheModel) {
    defaults.values[QStringLiteral("zofra_selected_station")] = QStringLiteral("joe");
    EXPECT_EQ(make().viewModel().currentStation.get(), RadioStation(RadioStation::joe));
}

TEST_F(AppDelegateStartTest, IsSharedFromLaunchUntilItEnds) {
    make();
    EXPECT_EQ(AppDelegate::shared(), nullptr);
    delegate->applicationDidFinishLaunching();
    EXPECT_EQ(AppDelegate::shared(), delegate.get());
    delegate.reset();
    EXPECT_EQ(AppDelegate::shared(), nullptr);
}

TEST_F(AppDelegateStartTest, LaunchMakesTheItemDrawsItAndThenStartsTheMetadata) {
    make().applicationDidFinishLaunching();
    EXPECT_EQ(record, (QStringList{u"statusItem -1"_qs, u"setAction"_qs, u"sendActionOn 20"_qs,
                                   u"setTitle"_qs, u"setImagePosition"_qs, u"setImage"_qs, u"setToolTip"_qs,
                                   u"GET core-search.radioplayer.cloud"_qs}));
    ASSERT_EQ(sockets.sockets.size(), 1U);
    EXPECT_EQ(sockets.last().resumes, 1);
    EXPECT_THAT(queue.startedTimers(), testing::Contains(std::chrono::milliseconds(15000)));
    EXPECT_TRUE(players.urls().empty()) << "nothing plays by itself";
}

TEST_F(AppDelegateStartTest, TheSocketIsStartedBeforeThePollAndThePollBeforeTheFirstRound) {
    // Each step looks at what the ones before it have done.
    std::vector<std::size_t> timersAtRequest;
    class Session final : public HttpSession {
    public:
        Session(ManualMainQueue& mainQueue, FakeSocketFactory& socketFactory)
            : queue(mainQueue)
            , sockets(socketFactory) {}
        void start(HttpRequest, Completion) override {
            if (!seen)
                seen = std::pair(queue.pendingTimers(), sockets.sockets.size());
        }
        ManualMainQueue& queue;
        FakeSocketFactory& sockets;
        std::optional<std::pair<std::size_t, std::size_t>> seen;
    };
    make();
    Session watching(queue, sockets);
    RadioViewModel model(RadioStation::zofra, watching, queue.clock(), sockets.maker(),
                         RadioViewModel::Environment{queue, output, *languages, hosts});
    AppDelegate::Environment environment{defaults,      queue,           output,    hosts,   watching,
                                         queue.clock(), sockets.maker(), statusBar, windows, application,
                                         workspace,     bundle,          {},        {},      {}};
    environment.languages = [this]() -> LanguageManager& { return *languages; };
    environment.player = [this]() -> RadioPlayer& { return *player; };
    environment.sonos = [this]() -> SonosManager& { return *sonos; };
    AppDelegate other(std::move(environment));
    other.applicationDidFinishLaunching();
    ASSERT_TRUE(watching.seen);
    EXPECT_EQ(watching.seen->first, 1U);
    EXPECT_EQ(watching.seen->second, 1U);
}

TEST_F(AppDelegateStartTest, WithoutAStatusBarEverythingElseStillRuns) {
    statusBar.givesItems = false;
    launch();
    EXPECT_EQ(delegate->statusItem(), nullptr);
    delegate->showContextMenu();
    delegate->updateStatusBarButton();
    delegate->togglePlayRadio();
    EXPECT_EQ(players.urls().size(), 1U);
    EXPECT_EQ(sockets.sockets.size(), 1U);
}

TEST_F(AppDelegateStartTest, AnItemWithoutButtonIsLeftAlone) {
    statusBar.itemsHaveButtons = false;
    make().applicationDidFinishLaunching();
    EXPECT_EQ(recorded({u"set"_qs, u"send"_qs, u"popUp"_qs}), QStringList());
    delegate->showContextMenu();
    EXPECT_EQ(recorded({u"popUp"_qs}), QStringList());
}

TEST_F(AppDelegateStartTest, EveryMenuItemIsValid) {
    EXPECT_TRUE(make().validateMenuItem(MenuItem()));
    EXPECT_TRUE(delegate->validateMenuItem(MenuItem::separator()));
}

TEST(VersionTextTest, SaysVersionAndBuild) {
    EXPECT_EQ(versionText({}), u"1.0 (Build 1)"_qs);
    EXPECT_EQ(versionText({{u"CFBundleShortVersionString"_qs, u"2.3"_qs}, {u"CFBundleVersion"_qs, u"45"_qs}}),
              u"2.3 (Build 45)"_qs);
    EXPECT_EQ(versionText({{u"CFBundleShortVersionString"_qs, 2.3}, {u"CFBundleVersion"_qs, 45}}),
              u"1.0 (Build 1)"_qs)
        << "values that are no text count as missing";
}

} // namespace
} // namespace zofra::test
