// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/HostProbe.h"

#include "tests/platform/net/HttpHarness.h"

#include <cerrno>

namespace zofra::test {
namespace {

using namespace std::chrono_literals;
using Step = HostProbe::Step;

class HostProbeTest : public testing::Test {
protected:
    [[nodiscard]] HostProbe probe(const QString& url, std::size_t enough = 1) const {
        HostProbe::Request request;
        request.url = QUrl(url);
        request.enoughBodyBytes = enough;
        request.timeout = patience;
        return HostProbe::run(request, authority.certificateFile());
    }
    [[nodiscard]] TlsIdentity identity(const QString& names = u"IP:127.0.0.1"_qs) {
        return authority.identityFor(names);
    }

    std::chrono::milliseconds patience = 20s;
    TestAuthority authority;
};

TEST_F(HostProbeTest, GetsThroughEveryStep) {
    LoopbackServer server(serving([](const QByteArray&) { return response(200, "hello"); }), identity());
    const auto result = probe(server.url(u"/"_qs, u"https"_qs), 1000);
    EXPECT_EQ(result.failedAt, Step::done) << result.reason.toStdString();
    EXPECT_EQ(result.status, 200);
    EXPECT_EQ(result.body, "hello");
    EXPECT_EQ(result.address, u"127.0.0.1"_qs);
    EXPECT_LE(result.nameTime, result.connectTime);
    EXPECT_LE(result.connectTime, result.tlsTime);
    EXPECT_LE(result.tlsTime, result.answerTime);
    EXPECT_GT(result.tlsTime, 0ms);
}

TEST_F(HostProbeTest, IsOverWhenThereIsEnoughOfAStreamWithoutEnd) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write("HTTP/1.0 200 OK\r\nContent-Type: audio/aac\r\n\r\n");
        while (connection.write(QByteArray(1000, 'x')))
            connection.pause(1ms);
    });
    const auto result = probe(server.url(u"/"_qs), 3);
    EXPECT_EQ(result.failedAt, Step::done) << result.reason.toStdString();
    EXPECT_EQ(result.body, "xxx");
    EXPECT_EQ(result.contentType, u"audio/aac"_qs);
}

TEST_F(HostProbeTest, SaysThatANameIsNone) {
    const auto result = probe(u"https://no-such-host.invalid/"_qs);
    EXPECT_EQ(result.failedAt, Step::name);
    EXPECT_FALSE(result.reason.isEmpty());
    EXPECT_FALSE(result.reason.contains(u'\n'));
}

TEST_F(HostProbeTest, SaysThatNobodyListens) {
    quint16 port = 0;
    {
        const LoopbackServer server([](ServerConnection&) {});
        port = server.port();
    }
    const auto result = probe(u"https://127.0.0.1:%1/"_qs.arg(port));
    EXPECT_EQ(result.failedAt, Step::connect);
    EXPECT_EQ(result.systemErrno, ECONNREFUSED);
}

TEST_F(HostProbeTest, SaysThatACertificateIsForAnotherOrByAStranger) {
    LoopbackServer other(serving([](const QByteArray&) { return response(200, "x"); }),
                         identity(u"DNS:other.example"_qs));
    EXPECT_EQ(probe(other.url(u"/"_qs, u"https"_qs)).failedAt, Step::tls);
    TestAuthority stranger;
    LoopbackServer strange(serving([](const QByteArray&) { return response(200, "x"); }),
                           stranger.identityFor(u"IP:127.0.0.1"_qs));
    const auto result = probe(strange.url(u"/"_qs, u"https"_qs));
    EXPECT_EQ(result.failedAt, Step::tls);
    EXPECT_TRUE(result.reason.contains(u"certificate"_qs)) << result.reason.toStdString();
}

TEST_F(HostProbeTest, TellsSilenceInTlsFromSilenceAfterIt) {
    patience = 300ms;
    const auto silence = [](ServerConnection& connection) { connection.waitForPeerToClose(); };
    LoopbackServer noTls(silence);
    const auto before = probe(noTls.url(u"/"_qs, u"https"_qs));
    EXPECT_EQ(before.failedAt, Step::tls);
    EXPECT_TRUE(before.timedOut);
    patience = 5s;
    LoopbackServer noAnswer(silence, identity());
    const auto after = probe(noAnswer.url(u"/"_qs, u"https"_qs));
    EXPECT_EQ(after.failedAt, Step::answer);
    EXPECT_TRUE(after.timedOut);
}

TEST_F(HostProbeTest, SaysThatTheConnectionEndsWithoutAnAnswer) {
    LoopbackServer server([](ServerConnection& connection) { connection.readUntil("\r\n\r\n"); }, identity());
    const auto result = probe(server.url(u"/"_qs, u"https"_qs));
    EXPECT_EQ(result.failedAt, Step::answer);
    EXPECT_FALSE(result.timedOut);
}

TEST_F(HostProbeTest, GoesNoFurtherThanFiveRedirectsAndNeverOutOfTls) {
    LoopbackServer loop(serving([](const QByteArray&) { return response(302, "", "Location: /again\r\n"); }),
                        identity());
    EXPECT_EQ(probe(loop.url(u"/"_qs, u"https"_qs)).failedAt, Step::answer);
    EXPECT_EQ(loop.accepted() > 0, true);
    LoopbackServer plain(serving([](const QByteArray&) { return response(200, "x"); }));
    const QByteArray target = "Location: " + plain.url(u"/"_qs).toUtf8() + "\r\n";
    LoopbackServer down(serving([target](const QByteArray&) { return response(302, "", target); }),
                        identity());
    EXPECT_NE(probe(down.url(u"/"_qs, u"https"_qs)).failedAt, Step::done);
    EXPECT_EQ(plain.accepted(), 0);

    const QByteArray up = "Location: " + down.url(u"/"_qs, u"https"_qs).toUtf8() + "\r\n";
    LoopbackServer climber(serving([up](const QByteArray&) { return response(302, "", up); }));
    const auto result = probe(climber.url(u"/"_qs));
    EXPECT_EQ(result.failedAt, Step::answer);
    EXPECT_EQ(result.reason, u"a redirect leads from a secure address to an insecure one"_qs);
}

TEST_F(HostProbeTest, CallsItselfByTheNameAndVersionOfTheProgram) {
    QByteArray asked;
    LoopbackServer server(serving([&](const QByteArray& head) {
        asked = head;
        return response(200, "x");
    }));
    EXPECT_EQ(probe(server.url(u"/"_qs)).failedAt, Step::done);
    EXPECT_TRUE(asked.contains("\r\nUser-Agent: ZofraZofra/" ZOFRA_VERSION "\r\n")) << asked.constData();
}

} // namespace
} // namespace zofra::test
