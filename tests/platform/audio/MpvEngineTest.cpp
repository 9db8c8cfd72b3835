// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/audio/MpvHandle.h"
#include "platform/linux/audio/MpvStreamPlayerFactory.h"
#include "tests/platform/audio/LoopbackServer.h"
#include "tests/platform/audio/PrivateSoundServer.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrintQt.h"
#include "tests/support/RecordingOutput.h"
#include "tests/support/ScopedEnvironment.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zofra::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Then = LoopbackServer::Then;

constexpr auto waiting = TimeControlStatus::waitingToPlayAtSpecifiedRate;
constexpr auto playing = TimeControlStatus::playing;

/// Lasts longer than any test: an mpv ends on a thread of its own, some time after the test that used it.
struct LastingSurroundings {
    TestApplication application;
    QtMainQueue queue;
    RecordingSystemLog log;
};
LastingSurroundings& surroundings() {
    static auto* instance = new LastingSurroundings;
    return *instance;
}

/// The real engine on streams from this computer.
class MpvEngineTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!::dlopen("libmpv.so.2", RTLD_LAZY | RTLD_LOCAL))
            GTEST_SKIP() << "skipped: libmpv is not installed";
        surroundings().log.lines.clear();
        environment.set("PULSE_SERVER", "unix:/nonexistent");
        environment.set("PIPEWIRE_REMOTE", "/nonexistent");
        environment.set("ALSA_CONFIG_PATH", "/dev/null");
    }

    void play(const QUrl& url) {
        item = std::make_shared<StreamItem>(url);
        stall = item->playbackStalled.add([this] { ++stalls; });
        failure = item->failedToPlayToEndTime.add([this] { ++failures; });
        player = factory->makePlayer(item);
        player->play();
    }
    /// Where one is installed.
    void startSoundServer() {
        if (!PrivateSoundServer::isAvailable())
            return;
        sound = std::make_unique<PrivateSoundServer>();
        environment.set("PULSE_SERVER", sound->address());
        ASSERT_TRUE(pollUntil([this] { return sound->isListening(); })) << sound->log();
    }
    /// Lets pass whatever is already on its way.
    static void settle() {
        bool done = false;
        surroundings().queue.async([&] { surroundings().queue.async([&] { done = true; }); });
        spinUntil([&] { return done; });
    }

    ScopedEnvironment environment;
    std::unique_ptr<PrivateSoundServer> sound;
    std::unique_ptr<MpvStreamPlayerFactory> factory = std::make_unique<MpvStreamPlayerFactory>(
        surroundings().queue, surroundings().log, MpvStreamPlayerFactory::Configuration{});
    std::shared_ptr<StreamItem> item;
    std::unique_ptr<StreamPlayer> player;
    ObservationToken stall;
    ObservationToken failure;
    int stalls = 0;
    int failures = 0;
};

/// The same with a sound server to play on.
class MpvEngineSoundTest : public MpvEngineTest {
protected:
    void SetUp() override {
        MpvEngineTest::SetUp();
        if (IsSkipped())
            return;
        if (!PrivateSoundServer::isAvailable())
            GTEST_SKIP() << "skipped: pulseaudio is not installed";
        startSoundServer();
    }
};

TEST_F(MpvEngineTest, isMissedInOneLineWhenTheLibraryIsMissing) {
    MpvStreamPlayerFactory::Configuration configuration;
    configuration.libraryFile = "libzofra-no-such-library.so";
    factory =
        std::make_unique<MpvStreamPlayerFactory>(surroundings().queue, surroundings().log, configuration);
    play(QUrl(QStringLiteral("http://127.0.0.1:1/")));
    EXPECT_EQ(failures, 0) << "never told in place";
    ASSERT_TRUE(spinUntil([this] { return failures > 0; }));
    player->play();
    ASSERT_TRUE(spinUntil([this] { return failures > 1; }));
    ASSERT_EQ(surroundings().log.lines.size(), 1U);
    EXPECT_TRUE(surroundings().log.lines.front().startsWith(
        QStringLiteral("libmpv cannot be loaded: libzofra-no-such")));
}

TEST_F(MpvEngineTest, isRefusedWhenTheLibraryIsAnother) {
    MpvStreamPlayerFactory::Configuration configuration;
    configuration.libraryFile = "libm.so.6";
    factory =
        std::make_unique<MpvStreamPlayerFactory>(surroundings().queue, surroundings().log, configuration);
    play(QUrl(QStringLiteral("http://127.0.0.1:1/")));
    ASSERT_TRUE(spinUntil([this] { return failures > 0; }));
    EXPECT_THAT(surroundings().log.lines,
                ElementsAre(QStringLiteral("libmpv cannot be used: it has no mpv_client_api_version")));
}

TEST_F(MpvEngineTest, failsOnARefusedPort) {
    LoopbackServer server("audio/mpeg", silentMp3(), Then::repeatForever);
    const auto url = server.url();
    server.stop();
    play(url);
    EXPECT_EQ(player->timeControlStatus(), waiting);
    ASSERT_TRUE(spinUntil([this] { return failures > 0; }));
    settle();
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(stalls, 0);
    EXPECT_EQ(player->timeControlStatus(), waiting);
    EXPECT_THAT(surroundings().log.lines, IsEmpty())
        << "that a station is off the air is not the engine's to say";
}

TEST_F(MpvEngineTest, failsOnAPage) {
    LoopbackServer server("text/html", "<!DOCTYPE html><html><body>" + QByteArray("<p>no</p>").repeated(2000),
                          Then::close);
    play(server.url());
    ASSERT_TRUE(spinUntil([this] { return failures > 0; }));
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(MpvEngineTest, followsNoListToAnotherAddress) {
    ASSERT_NO_FATAL_FAILURE(startSoundServer());
    LoopbackServer elsewhere("audio/mpeg", silentMp3(), Then::repeatForever);
    const auto url = elsewhere.url().toEncoded();
    const std::vector<std::pair<QByteArray, QByteArray>> lists{
        {"audio/x-mpegurl", "#EXTM3U\n#EXTINF:1,x\n" + url + "\n"},
        {"audio/x-scpls", "[playlist]\nFile1=" + url + "\nNumberOfEntries=1\n"},
        {"application/vnd.apple.mpegurl",
         "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXT-X-VERSION:3\n#EXTINF:10,\n" + url + "\n"},
        {"text/plain", "# mpv EDL v0\n" + url + "\n"},
    };
    for (const auto& [type, list] : lists) {
        LoopbackServer server(type, list, Then::close);
        failures = 0;
        play(server.url());
        EXPECT_TRUE(spinUntil([this] { return failures > 0; })) << type.constData();
        EXPECT_EQ(elsewhere.requests(), 0) << type.constData();
    }
}

TEST_F(MpvEngineTest, saysInOneLineThatThereIsNoAudioDevice) {
    LoopbackServer server("audio/mpeg", silentMp3(), Then::repeatForever);
    play(server.url());
    ASSERT_TRUE(spinUntil([this] { return failures > 0; }));
    EXPECT_THAT(surroundings().log.lines, ElementsAre(QStringLiteral("There is no audio device to play on")));
}

TEST_F(MpvEngineSoundTest, playsAndFailsOnceWhenTheStationGoesOffTheAir) {
    LoopbackServer server("audio/mpeg", silentMp3(), Then::close); // A second, then the end.
    play(server.url());
    ASSERT_TRUE(spinUntil([this] { return player->timeControlStatus() == playing; }));
    EXPECT_EQ(failures, 0);
    ASSERT_TRUE(spinUntil([this] { return failures > 0; }));
    settle();
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(player->timeControlStatus(), waiting);
    EXPECT_THAT(surroundings().log.lines, IsEmpty());
}

TEST_F(MpvEngineSoundTest, pausesAndGoesOn) {
    LoopbackServer server("audio/mpeg", silentMp3(), Then::repeatForever);
    play(server.url());
    ASSERT_TRUE(spinUntil([this] { return player->timeControlStatus() == playing; }));
    player->pause();
    EXPECT_EQ(player->timeControlStatus(), TimeControlStatus::paused);
    settle();
    player->play();
    ASSERT_TRUE(spinUntil([this] { return player->timeControlStatus() == playing; }));
    EXPECT_EQ(server.requests(), 1) << "the connection was held";
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(stalls, 0);
}

TEST_F(MpvEngineSoundTest, playsOneStationAfterTheOtherWithoutMixingTheirNews) {
    LoopbackServer good("audio/mpeg", silentMp3(), Then::repeatForever);
    LoopbackServer page("text/html", "<html>", Then::close);
    for (int i = 0; i < 10; ++i) {
        play(page.url());
        play(good.url());
        ASSERT_TRUE(spinUntil([this] { return player->timeControlStatus() == playing; })) << i;
        settle();
    }
    EXPECT_EQ(failures, 0) << "the page's failures belonged to players that are gone";
    EXPECT_EQ(good.requests(), 10);
}

TEST_F(MpvEngineSoundTest, playsTheLastOfHundredsOfStationsThatWereChosenAtOnce) {
    LoopbackServer server("audio/mpeg", silentMp3(), Then::repeatForever);
    play(server.url());
    ASSERT_TRUE(spinUntil([this] { return player->timeControlStatus() == playing; }));
    for (int i = 0; i < 800; ++i)
        play(server.url());
    ASSERT_TRUE(spinUntil([this] { return player->timeControlStatus() == playing; }));
    settle();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(server.requests(), 2) << "those in between were never opened";
}

/// Frames of 128 kbit/s whose contents make no sense to a decoder.
QByteArray brokenMp3() {
    QByteArray bytes;
    quint32 noise = 1;
    for (int frame = 0; frame < 38; ++frame) {
        bytes += QByteArray::fromHex("fffb9064");
        for (int i = 0; i < 413; ++i) {
            noise = noise * 1664525U + 1013904223U;
            bytes += static_cast<char>((noise >> 24U) & 0x7FU);
        }
    }
    return bytes;
}

TEST_F(MpvEngineSoundTest, writesNothingToStandardErrorWhateverAStreamHolds) {
    LoopbackServer good("audio/mpeg", silentMp3(), Then::repeatForever);
    LoopbackServer broken("audio/mpeg", brokenMp3(), Then::repeatForever);
    ::testing::internal::CaptureStderr();
    // One mpv is made while another is there, which then ends: so it is after one that hung.
    play(good.url());
    spinUntil([this] { return player->timeControlStatus() == playing; });
    auto former = std::exchange(
        factory, std::make_unique<MpvStreamPlayerFactory>(surroundings().queue, surroundings().log,
                                                          MpvStreamPlayerFactory::Configuration{}));
    auto formerPlayer = std::move(player);
    play(broken.url());
    spinUntil([this] { return player->timeControlStatus() == playing; });
    formerPlayer.reset();
    former.reset();
    const bool hasEnded = pollUntil([] { return MpvHandle::stillEnding() == 0; });
    play(broken.url());
    const bool hasPlayed = spinUntil([this] { return player->timeControlStatus() == playing; });
    const auto written = ::testing::internal::GetCapturedStderr();
    EXPECT_TRUE(hasEnded);
    EXPECT_TRUE(hasPlayed);
    EXPECT_EQ(written, "");
}

TEST_F(MpvEngineSoundTest, failsWhenTheSoundServerDiesAndPlaysOnTheNext) {
    LoopbackServer server("audio/mpeg", silentMp3(), Then::repeatForever);
    play(server.url());
    ASSERT_TRUE(spinUntil([this] { return player->timeControlStatus() == playing; }));
    sound->stop();
    ASSERT_TRUE(spinUntil([this] { return failures > 0; }));
    EXPECT_THAT(surroundings().log.lines, ElementsAre(QStringLiteral("There is no audio device to play on")));
    sound->start();
    ASSERT_TRUE(pollUntil([this] { return sound->isListening(); })) << sound->log();
    player->play();
    EXPECT_TRUE(spinUntil([this] { return player->timeControlStatus() == playing; }));
}

} // namespace
} // namespace zofra::test
