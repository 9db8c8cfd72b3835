// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/AudioProbe.h"

#include "tests/platform/audio/PrivateSoundServer.h"
#include "tests/support/EventLoop.h"
#include "tests/support/PrintQt.h"
#include "tests/support/ScopedEnvironment.h"

#include <QCoreApplication>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <optional>

namespace zofra::test {
namespace {

using namespace std::chrono_literals;
using Outcome = AudioProbe::Outcome;

/// No sound but what a test makes.
class AudioProbeTest : public testing::Test {
protected:
    AudioProbeTest() {
        if (!QCoreApplication::instance())
            m_application.emplace();
        environment.set("PULSE_SERVER", "unix:/nonexistent");
        environment.set("PIPEWIRE_REMOTE", "/nonexistent");
        environment.set("PIPEWIRE_DEBUG", "0");
        environment.set("ALSA_CONFIG_PATH", "/dev/null");
    }
    ScopedEnvironment environment;

private:
    std::optional<TestApplication> m_application;
};

bool hasEngine() {
    return ::dlopen(MpvLibrary::defaultFileName, RTLD_LAZY | RTLD_LOCAL) != nullptr;
}

TEST_F(AudioProbeTest, SaysInOneLineThatTheEngineIsMissing) {
    const auto probe = AudioProbe::run(1s, "libzofra-no-such-library.so");
    EXPECT_EQ(probe.outcome, Outcome::noEngine);
    EXPECT_FALSE(probe.reason.isEmpty());
    EXPECT_FALSE(probe.reason.contains(u'\n'));
}

TEST_F(AudioProbeTest, OpensTheDeviceOfASoundServerAndNamesIt) {
    if (!PrivateSoundServer::isAvailable() || !hasEngine())
        GTEST_SKIP() << "skipped: needs pulseaudio and libmpv";
    PrivateSoundServer server;
    environment.set("PULSE_SERVER", server.address());
    ASSERT_TRUE(pollUntil([&server] { return server.isListening(); })) << server.log();
    const auto probe = AudioProbe::run(30s);
    EXPECT_EQ(probe.outcome, Outcome::opened) << probe.reason.toStdString();
    EXPECT_EQ(probe.driver, u"pulse"_qs);
    EXPECT_EQ(probe.devices.size(), 1);
}

TEST_F(AudioProbeTest, NoticesThatThereIsNoSoundServer) {
    if (!hasEngine())
        GTEST_SKIP() << "skipped: needs libmpv";
    const auto probe = AudioProbe::run(30s);
    EXPECT_EQ(probe.outcome, Outcome::noDevice) << probe.driver.toStdString();
    EXPECT_FALSE(probe.reason.isEmpty());
}

TEST_F(AudioProbeTest, WaitsNoLongerThanItIsTold) {
    if (!hasEngine())
        GTEST_SKIP() << "skipped: needs libmpv";
    EXPECT_EQ(AudioProbe::run(0ms).outcome, Outcome::timedOut);
}

} // namespace
} // namespace zofra::test
