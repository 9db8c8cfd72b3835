// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/StreamSource.h"

#include "tests/platform/audio/LoopbackServer.h"
#include "tests/support/PrintQt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace zofra::test {
namespace {

using Then = LoopbackServer::Then;

/// What was registered with an mpv that is none.
struct Registered {
    std::vector<std::string> protocols;
    void* userData = nullptr;
    mpv_stream_cb_open_ro_fn open = nullptr;
    int result = 0;
};
Registered* registered = nullptr;

int addProtocol(mpv_handle*, const char* protocol, void* userData, mpv_stream_cb_open_ro_fn open) {
    registered->protocols.emplace_back(protocol);
    registered->userData = userData;
    registered->open = open;
    return registered->result;
}

class StreamSourceTest : public ::testing::Test {
protected:
    void SetUp() override { registered = &mpv; }
    void TearDown() override { registered = nullptr; }

    /// Opens as mpv does, and reads until `most` bytes came, or to the end.
    QByteArray read(const QUrl& url, qsizetype most) {
        EXPECT_EQ(source.serve(nullptr, &addProtocol), 0);
        mpv_stream_cb_info info{};
        auto address = StreamSource::address(url);
        EXPECT_EQ(mpv.open(mpv.userData, address.data(), &info), 0);
        const std::unique_ptr<void, void (*)(void*)> closer(info.cookie, info.close_fn);
        QByteArray bytes;
        char buffer[1000];
        while (bytes.size() < most) {
            end = info.read_fn(info.cookie, buffer, sizeof buffer);
            if (end <= 0)
                break;
            bytes.append(buffer, static_cast<qsizetype>(end));
        }
        return bytes;
    }

    Registered mpv;
    StreamSource source{[] { return HttpStream::Settings{{}, "Test/1.0"}; }};
    std::int64_t end = 0;
};

TEST_F(StreamSourceTest, servesItsOwnNamesOfBothKindsOfAddresses) {
    EXPECT_EQ(source.serve(nullptr, &addProtocol), 0);
    EXPECT_THAT(mpv.protocols, ::testing::ElementsAre("zofrahttps", "zofrahttp"));
    EXPECT_EQ(StreamSource::address(QUrl(QStringLiteral("https://a.example/x.aac?y=ä"))),
              "zofrahttps://a.example/x.aac?y=%C3%A4");
}

TEST_F(StreamSourceTest, saysWhenItIsNotTaken) {
    mpv.result = MPV_ERROR_INVALID_PARAMETER;
    EXPECT_EQ(source.serve(nullptr, &addProtocol), MPV_ERROR_INVALID_PARAMETER);
}

TEST_F(StreamSourceTest, cannotBeSoughtIn) {
    EXPECT_EQ(source.serve(nullptr, &addProtocol), 0);
    mpv_stream_cb_info info{};
    QByteArray address = "zofrahttp://127.0.0.1:1/";
    ASSERT_EQ(mpv.open(mpv.userData, address.data(), &info), 0);
    EXPECT_EQ(info.seek_fn, nullptr);
    EXPECT_EQ(info.size_fn, nullptr);
    EXPECT_NE(info.cancel_fn, nullptr);
    info.close_fn(info.cookie);
}

TEST_F(StreamSourceTest, beginsWithAWholeFrame) {
    const LoopbackServer server("audio/mpeg", silentMp3().mid(200) + silentMp3(), Then::close);
    const auto bytes = read(server.url(), 10'000'000);
    EXPECT_TRUE(bytes == silentMp3().repeated(2).mid(417)) << bytes.size();
    EXPECT_EQ(end, 0);
}

TEST_F(StreamSourceTest, givesOnNothingThatIsNoSound) {
    const LoopbackServer page("text/html", "<html>" + QByteArray(40'000, ' ') + "</html>", Then::close);
    EXPECT_EQ(read(page.url(), 10'000'000), "");
    EXPECT_EQ(end, 0);
}

TEST_F(StreamSourceTest, givesUpAStreamThatIsNoSoundHoweverLongItLasts) {
    const LoopbackServer noise("audio/aac", QByteArray(10'000, 'x'), Then::repeatForever);
    EXPECT_EQ(read(noise.url(), 10'000'000), "");
    EXPECT_EQ(end, -1);
}

TEST_F(StreamSourceTest, opensWhatWasPreparedMeanwhile) {
    const LoopbackServer server("audio/mpeg", silentMp3(), Then::repeatForever);
    source.expect(server.url());
    source.prepare();
    EXPECT_EQ(server.requests(), 1);
    EXPECT_TRUE(read(server.url(), 100'000).startsWith(silentMp3().first(417)));
    EXPECT_EQ(server.requests(), 1);
}

TEST_F(StreamSourceTest, preparesNothingThatIsNotWantedAnyMore) {
    const LoopbackServer server("audio/mpeg", silentMp3(), Then::repeatForever);
    source.expect(server.url());
    source.expect({});
    source.prepare();
    EXPECT_EQ(server.requests(), 0);
    source.expect(server.url());
    source.prepare();
    source.expect({});
    EXPECT_FALSE(read(server.url(), 1).isEmpty());
    EXPECT_EQ(server.requests(), 2) << "what was prepared is over";
}

TEST_F(StreamSourceTest, opensWhatIsAskedForAndNotWhatWasPrepared) {
    const LoopbackServer one("audio/mpeg", silentMp3(), Then::repeatForever);
    const LoopbackServer other("audio/mpeg", silentMp3(), Then::repeatForever);
    source.expect(one.url());
    source.prepare();
    EXPECT_FALSE(read(other.url(), 1).isEmpty());
    EXPECT_EQ(other.requests(), 1);
}

TEST_F(StreamSourceTest, cancellingOneThatIsClosedTouchesNothing) {
    const LoopbackServer server("audio/mpeg", silentMp3(), Then::close);
    EXPECT_EQ(source.serve(nullptr, &addProtocol), 0);
    auto address = StreamSource::address(server.url());
    mpv_stream_cb_info closed{};
    ASSERT_EQ(mpv.open(mpv.userData, address.data(), &closed), 0);
    closed.close_fn(closed.cookie);
    mpv_stream_cb_info open{};
    ASSERT_EQ(mpv.open(mpv.userData, address.data(), &open), 0);
    ASSERT_NE(open.cookie, closed.cookie) << "what is closed is never meant again";
    closed.cancel_fn(closed.cookie);
    closed.close_fn(closed.cookie);
    char buffer[100];
    EXPECT_EQ(closed.read_fn(closed.cookie, buffer, sizeof buffer), -1);
    EXPECT_EQ(open.read_fn(open.cookie, buffer, sizeof buffer), 100);
    open.close_fn(open.cookie);
}

TEST_F(StreamSourceTest, mayBeCancelledAndClosedByTwoThreadsAtOnce) {
    EXPECT_EQ(source.serve(nullptr, &addProtocol), 0);
    QByteArray address = "zofrahttp://127.0.0.1:1/";
    for (int round = 0; round < 200; ++round) {
        mpv_stream_cb_info info{};
        ASSERT_EQ(mpv.open(mpv.userData, address.data(), &info), 0);
        std::latch both(2);
        std::thread canceller([&] {
            both.arrive_and_wait();
            info.cancel_fn(info.cookie);
        });
        both.arrive_and_wait();
        info.close_fn(info.cookie);
        canceller.join();
    }
}

TEST_F(StreamSourceTest, failsWhereNobodyListens) {
    EXPECT_EQ(read(QUrl(QStringLiteral("http://127.0.0.1:1/")), 1), "");
    EXPECT_EQ(end, -1);
}

} // namespace
} // namespace zofra::test
