// SPDX-License-Identifier: GPL-3.0-or-later
// Servers that send too much, too slowly, or something else altogether.
#include "tests/platform/net/HttpHarness.h"

#include <cerrno>

namespace zofra::test {
namespace {

using Code = HttpError::Code;

HttpRequest capped(const LoopbackServer& server, std::size_t cap) {
    auto request = requestFor(server.url(u"/"_qs));
    request.maxBodyBytes = cap;
    return request;
}

/// The time a request took, and what it came to.
std::pair<std::chrono::milliseconds, HttpResult> timed(HttpSession& session, HttpRequest request) {
    const auto start = std::chrono::steady_clock::now();
    auto result = fetch(session, std::move(request));
    return {std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start),
            std::move(result)};
}

TEST(CurlBodyCapTest, LetsABodyOfExactlyThatSizePass) {
    LoopbackServer server(serving([](const QByteArray&) { return response(200, QByteArray(1000, 'x')); }));
    CurlHttpSession session;
    EXPECT_EQ(fetch(session, capped(server, 1000))->body.size(), 1000);
    EXPECT_EQ(codeOf(fetch(session, capped(server, 999))), Code::tooLarge);
    EXPECT_EQ(codeOf(fetch(session, capped(server, 0))), Code::tooLarge);
}

TEST(CurlBodyCapTest, RefusesADeclaredLengthWithoutReadingOn) {
    for (const auto* length : {"1000001", "9223372036854775807", "99999999999999999999999"}) {
        LoopbackServer server([length](ServerConnection& connection) {
            connection.readUntil("\r\n\r\n");
            connection.write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray(length) + "\r\n\r\nx");
            connection.waitForPeerToClose();
        });
        CurlHttpSession session;
        EXPECT_EQ(codeOf(fetch(session, capped(server, 1000000))), Code::tooLarge) << length;
    }
}

TEST(CurlBodyCapTest, StopsAnEndlessBodyWhileReading) {
    for (const QByteArray& head : {QByteArray("HTTP/1.1 200 OK\r\n\r\n"),
                                   QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n")}) {
        LoopbackServer server([&head](ServerConnection& connection) {
            connection.readUntil("\r\n\r\n");
            connection.write(head);
            const auto chunk = head.contains("chunked") ? "2000\r\n" + QByteArray(0x2000, 'x') + "\r\n"
                                                        : QByteArray(0x2000, 'x');
            while (!connection.isStopping() && connection.write(chunk)) {
            }
        });
        CurlHttpSession session;
        EXPECT_EQ(codeOf(fetch(session, capped(server, 256 * 1024))), Code::tooLarge) << head.toStdString();
    }
}

TEST(CurlHeaderCapTest, StopsEndlessHeaders) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write("HTTP/1.1 200 OK\r\n");
        const QByteArray line = "X: " + QByteArray(1000, 'y') + "\r\n";
        while (!connection.isStopping() && connection.write(line)) {
        }
    });
    CurlHttpSession session;
    EXPECT_EQ(codeOf(fetch(session, server.url(u"/"_qs))), Code::tooLarge);
}

TEST(CurlHeaderCapTest, StopsEndlessInterimAnswers) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        while (!connection.isStopping() && connection.write("HTTP/1.1 103 Early\r\nX: y\r\n\r\n")) {
        }
    });
    CurlHttpSession session;
    EXPECT_EQ(codeOf(fetch(session, server.url(u"/"_qs))), Code::tooLarge);
}

TEST(CurlTimeoutTest, EndsARequestThatIsNeverAnswered) {
    LoopbackServer server([](ServerConnection& connection) { connection.waitForPeerToClose(); });
    CurlHttpSession session;
    auto request = requestFor(server.url(u"/"_qs));
    request.timeout = 200ms;
    const auto [time, result] = timed(session, request);
    EXPECT_EQ(codeOf(result), Code::timedOut);
    EXPECT_GE(time, 190ms);
    EXPECT_LT(time, 5s);
}

TEST(CurlTimeoutTest, CountsTheWholeRequestNotTheLastByte) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
        while (!connection.isStopping() && connection.write("x"))
            connection.pause(10ms);
    });
    CurlHttpSession session;
    auto request = requestFor(server.url(u"/"_qs));
    request.timeout = 300ms;
    const auto [time, result] = timed(session, request);
    EXPECT_EQ(codeOf(result), Code::timedOut);
    EXPECT_LT(time, 5s);
}

TEST(CurlTimeoutTest, CountsRedirectsIn) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.pause(150ms);
        connection.write(redirect(u"/again"_qs));
    });
    CurlHttpSession session;
    auto request = requestFor(server.url(u"/"_qs));
    request.timeout = 250ms;
    EXPECT_EQ(codeOf(fetch(session, request)), Code::timedOut);
}

TEST(CurlTimeoutTest, EndsATlsHandshakeThatIsNeverAnswered) {
    LoopbackServer server([](ServerConnection& connection) { connection.waitForPeerToClose(); });
    CurlHttpSession session;
    auto request = requestFor(server.url(u"/"_qs, u"https"_qs));
    request.timeout = 200ms;
    EXPECT_EQ(codeOf(fetch(session, request)), Code::timedOut);
}

TEST(CurlTimeoutTest, ZeroIsNotForEver) {
    LoopbackServer server([](ServerConnection& connection) { connection.waitForPeerToClose(); });
    CurlHttpSession session;
    auto request = requestFor(server.url(u"/"_qs));
    request.timeout = 0ms;
    EXPECT_EQ(codeOf(fetch(session, request)), Code::timedOut);
}

TEST(CurlFailureTest, ARefusedPortSaysSo) {
    std::uint16_t port = 0;
    {
        LoopbackServer server([](ServerConnection&) {});
        port = server.port();
    }
    CurlHttpSession session;
    const auto result = fetch(session, u"http://127.0.0.1:%1/"_qs.arg(port));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code, Code::cannotConnect);
    EXPECT_EQ(result.error().systemErrno, ECONNREFUSED);
    EXPECT_FALSE(result.error().localizedDescription.isEmpty());
}

TEST(CurlFailureTest, AnUnknownNameSaysSo) {
    CurlHttpSession session;
    const auto result = fetch(session, u"http://nowhere.invalid/"_qs);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code, Code::cannotFindHost);
    EXPECT_EQ(result.error().systemErrno, 0);
}

struct Talk {
    const char* name;
    QByteArray bytes;
    Code code;
};

void PrintTo(const Talk& talk, std::ostream* out) {
    *out << talk.name;
}

class StrangeServerTest : public testing::TestWithParam<Talk> {};

TEST_P(StrangeServerTest, IsAnErrorOfOneLine) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write(GetParam().bytes);
    });
    CurlHttpSession session;
    const auto result = fetch(session, server.url(u"/"_qs));
    EXPECT_FALSE(result);
    EXPECT_EQ(codeOf(result), GetParam().code) << result.error().localizedDescription.toStdString();
    const auto line = result.error().localizedDescription;
    EXPECT_FALSE(line.isEmpty());
    EXPECT_LE(line.size(), 300);
    EXPECT_FALSE(line.contains(u'\n'));
}

INSTANTIATE_TEST_SUITE_P(
    Answers, StrangeServerTest,
    testing::Values(
        Talk{"silence", {}, Code::connectionLost}, Talk{"garbage", QByteArray(500, '\x80'), Code::other},
        Talk{"no headers", "<html>old times</html>", Code::other},
        Talk{"streaming server", "ICY 200 OK\r\n\r\nx", Code::other},
        Talk{"half a header", "HTTP/1.1 200 O", Code::connectionLost},
        Talk{"half a body", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", Code::connectionLost},
        Talk{"bad chunk", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nabc",
             Code::connectionLost},
        Talk{"negative length", "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nabc", Code::other}));

} // namespace
} // namespace zofra::test
