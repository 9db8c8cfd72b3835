// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/AudioFindings.h"

#include "tests/support/PrintQt.h"
#include "tests/support/ScopedEnvironment.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace zofra::doctor {
namespace {

using Outcome = AudioProbe::Outcome;

AudioProbe probe(Outcome outcome) {
    AudioProbe made;
    made.outcome = outcome;
    return made;
}

TEST(AudioFindingsTest, NamesServerAndDevices) {
    auto opened = probe(Outcome::opened);
    opened.driver = u"pulse"_qs;
    opened.devices = {u"Built-in"_qs, u"HDMI"_qs};
    EXPECT_EQ(judgeAudio({}, opened).text, u"PulseAudio or PipeWire: Built-in, HDMI"_qs);
    EXPECT_EQ(judgeAudio({}, opened).verdict, Verdict::ok);
    opened.devices += {u"c"_qs, u"d"_qs, u"e"_qs};
    EXPECT_TRUE(judgeAudio({}, opened).text.endsWith(u"Built-in, HDMI, c and 2 more"_qs));
    opened.driver = u"alsa"_qs;
    opened.devices.clear();
    EXPECT_EQ(judgeAudio({}, opened).text, u"ALSA, without a sound server"_qs);
}

TEST(AudioFindingsTest, TellsAMissingServerFromAMissingDevice) {
    auto none = probe(Outcome::noDevice);
    none.reason = u"initialization failed"_qs;
    const auto noServer = judgeAudio({SoundServer::State::absent, u"/run/x"_qs}, none);
    EXPECT_EQ(noServer.text, u"no audio server answers at /run/x (initialization failed)"_qs);
    EXPECT_TRUE(noServer.cure.contains(u"pipewire"_qs));
    const auto noDevice = judgeAudio({SoundServer::State::present, u"/run/x"_qs}, none);
    EXPECT_TRUE(noDevice.text.contains(u"no device"_qs));
    EXPECT_NE(noDevice.cure, noServer.cure);
}

TEST(AudioFindingsTest, TellsAMissingEngineAndOneThatWaits) {
    auto missing = probe(Outcome::noEngine);
    missing.reason = u"libmpv cannot be loaded: no such file"_qs;
    EXPECT_EQ(judgeAudio({}, missing).text, missing.reason);
    EXPECT_TRUE(judgeAudio({}, missing).cure.contains(u"libmpv2"_qs));
    EXPECT_TRUE(judgeAudio({}, probe(Outcome::timedOut)).text.contains(u"in time"_qs));
}

TEST(AudioFindingsTest, ReadsTheEnginesListOfDevices) {
    const QByteArray list =
        R"([{"name":"auto","description":"Any"},{"name":"pulse/a","description":"Built-in"},
                                {"name":"pulse","description":"none"},{"name":"alsa/b","description":"Card"},
                                {"name":"pulse/c"},7,null])";
    EXPECT_EQ(audioDevicesOf(u"pulse"_qs, list), (QStringList{u"Built-in"_qs, QString()}));
    EXPECT_EQ(audioDevicesOf(u"alsa"_qs, list), QStringList{u"Card"_qs});
    EXPECT_TRUE(audioDevicesOf({}, list).isEmpty());
    EXPECT_TRUE(audioDevicesOf(u"pulse"_qs, "garbage").isEmpty());
    EXPECT_EQ(audioDevicesOf(u"p"_qs, '[' + QByteArray(R"({"name":"p/x"},)").repeated(100) + "0]").size(),
              32);
}

TEST(AudioFindingsTest, FindsTheServerWhereTheEnvironmentSays) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"native"_qs);
    test::ScopedEnvironment environment;
    environment.set("PULSE_SERVER", "unix:" + path.toUtf8());
    EXPECT_EQ(SoundServer::find().state, SoundServer::State::absent);

    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const auto name = QFile::encodeName(path);
    ASSERT_LT(static_cast<std::size_t>(name.size()), sizeof(address.sun_path));
    std::copy(name.begin(), name.end(), address.sun_path);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(SoundServer::find().state, SoundServer::State::refuses);
    ASSERT_EQ(::listen(listener, 1), 0);
    EXPECT_EQ(SoundServer::find().state, SoundServer::State::present);
    EXPECT_EQ(SoundServer::find().address, u"unix:"_qs + path);
    ::close(listener);
}

} // namespace
} // namespace zofra::doctor
