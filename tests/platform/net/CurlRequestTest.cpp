// SPDX-License-Identifier: GPL-3.0-or-later
// What a request looks like on the wire, and what its answer becomes.
#include "tests/platform/net/HttpHarness.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <pthread.h>
#include <thread>

namespace zofra::test {
namespace {

/// Keeps the last request as it came.
class EchoServer {
public:
    [[nodiscard]] QString url(const QString& path) const { return m_server.url(path); }
    [[nodiscard]] QByteArray head() const {
        const std::scoped_lock lock(m_mutex);
        return m_head;
    }
    [[nodiscard]] QByteArray body() const {
        const std::scoped_lock lock(m_mutex);
        return m_body;
    }
    [[nodiscard]] bool hasHeaderLine(const QByteArray& line) const {
        return head().contains("\r\n" + line + "\r\n");
    }
    [[nodiscard]] bool mentions(const QByteArray& name) const {
        return head().toLower().contains(name.toLower());
    }

private:
    mutable std::mutex m_mutex;
    QByteArray m_head;
    QByteArray m_body;
    LoopbackServer m_server{[this](ServerConnection& connection) {
        const auto head = connection.readUntil("\r\n\r\n");
        qsizetype size = 0;
        const auto at = head.indexOf("Content-Length: ");
        if (at >= 0)
            size = head.mid(at + 16, head.indexOf("\r\n", at) - at - 16).toLongLong();
        const auto body = connection.read(size);
        {
            const std::scoped_lock lock(m_mutex);
            m_head = head;
            m_body = body;
        }
        connection.write(response(200, "fine", "Connection: close\r\n"));
    }};
};

TEST(CurlRequestTest, GivesStatusAndBody) {
    LoopbackServer server(serving([](const QByteArray& head) {
        return head.startsWith("GET /there ") ? response(200, QByteArray("a\0b\xFF", 4))
                                              : response(404, "not here");
    }));
    CurlHttpSession session;
    const auto there = fetch(session, server.url(u"/there"_qs));
    ASSERT_TRUE(there);
    EXPECT_EQ(there->status, 200);
    EXPECT_EQ(there->body, QByteArray("a\0b\xFF", 4));
    const auto elsewhere = fetch(session, server.url(u"/elsewhere"_qs));
    ASSERT_TRUE(elsewhere) << "a status of failure is a response";
    EXPECT_EQ(elsewhere->status, 404);
    EXPECT_EQ(elsewhere->body, "not here");
}

TEST(CurlRequestTest, CompletesOnTheSessionsOwnThread) {
    EchoServer server;
    CurlHttpSession session;
    std::promise<QByteArray> name;
    session.start(requestFor(server.url(u"/"_qs)), [&name](const HttpResult&) {
        std::array<char, 16> text{};
        pthread_getname_np(pthread_self(), text.data(), text.size());
        name.set_value(QByteArray(text.data()));
    });
    auto future = name.get_future();
    ASSERT_EQ(future.wait_for(20s), std::future_status::ready);
    EXPECT_EQ(future.get(), "zofra-http");
}

TEST(CurlRequestTest, SpellsHeaderNamesAsGiven) {
    EchoServer server;
    CurlHttpSession session;
    auto request = requestFor(server.url(u"/x"_qs));
    request.headers = {{"SOAPACTION", "\"urn:x#Play\""}, {"user-AGENT", "Mozilla/5.0"}, {"X-Empty", ""}};
    ASSERT_TRUE(fetch(session, request));
    EXPECT_TRUE(server.hasHeaderLine("SOAPACTION: \"urn:x#Play\"")) << server.head().toStdString();
    EXPECT_TRUE(server.hasHeaderLine("user-AGENT: Mozilla/5.0"));
    EXPECT_TRUE(server.hasHeaderLine("X-Empty:"));
    EXPECT_TRUE(server.head().startsWith("GET /x HTTP/1.1\r\n"));
}

TEST(CurlRequestTest, AddsNothingOfItsOwnAccordThatWouldMatter) {
    EchoServer server;
    CurlHttpSession session;
    ASSERT_TRUE(fetch(session, server.url(u"/"_qs)));
    for (const auto* header : {"user-agent", "accept-encoding", "cookie", "expect", "cache-control", "pragma",
                               "referer", "content-type", "content-length"})
        EXPECT_FALSE(server.mentions(QByteArray("\r\n") + header + ':')) << header;
}

TEST(CurlRequestTest, AsksForAFreshAnswerWhenCachesAreToBeIgnored) {
    EchoServer server;
    CurlHttpSession session;
    auto request = requestFor(server.url(u"/"_qs));
    request.cachePolicy = HttpRequest::CachePolicy::ignoreLocalAndRemote;
    ASSERT_TRUE(fetch(session, request));
    EXPECT_TRUE(server.hasHeaderLine("Cache-Control: no-cache"));
    EXPECT_TRUE(server.hasHeaderLine("Pragma: no-cache"));
    request.headers = {{"cache-control", "no-store"}};
    ASSERT_TRUE(fetch(session, request));
    EXPECT_TRUE(server.hasHeaderLine("cache-control: no-store"));
    EXPECT_FALSE(server.hasHeaderLine("Cache-Control: no-cache")) << "the caller's own word stands";
}

TEST(CurlRequestTest, PostsTheBodyAtOnce) {
    EchoServer server;
    CurlHttpSession session;
    auto request = requestFor(server.url(u"/control"_qs));
    request.method = "POST";
    request.headers = {{"Content-Type", "text/xml; charset=\"utf-8\""}};
    request.body = QByteArray(3000, 'x') + QByteArray("\0\r\n\xC3\xA9", 5) + QByteArray(1024 * 1024, 'y');
    ASSERT_TRUE(fetch(session, request));
    EXPECT_TRUE(server.head().startsWith("POST /control HTTP/1.1\r\n"));
    EXPECT_FALSE(server.mentions("expect:"));
    EXPECT_TRUE(server.hasHeaderLine("Content-Type: text/xml; charset=\"utf-8\""));
    EXPECT_EQ(server.body(), request.body);
}

TEST(CurlRequestTest, PostsWithoutABody) {
    EchoServer server;
    CurlHttpSession session;
    auto request = requestFor(server.url(u"/"_qs));
    request.method = "POST";
    ASSERT_TRUE(fetch(session, request));
    EXPECT_TRUE(server.head().startsWith("POST / "));
    EXPECT_TRUE(server.hasHeaderLine("Content-Length: 0"));
    EXPECT_FALSE(server.mentions("content-type"));
}

TEST(CurlRequestTest, SendsOtherMethods) {
    EchoServer server;
    CurlHttpSession session;
    auto request = requestFor(server.url(u"/"_qs));
    for (const auto* method : {"NOTIFY", "SUBSCRIBE", "DELETE"}) {
        request.method = method;
        ASSERT_TRUE(fetch(session, request));
        EXPECT_TRUE(server.head().startsWith(QByteArray(method) + " / HTTP/1.1\r\n"));
    }
    request.method = "PUT";
    request.body = "body";
    ASSERT_TRUE(fetch(session, request));
    EXPECT_TRUE(server.head().startsWith("PUT / "));
    EXPECT_EQ(server.body(), "body");
}

TEST(CurlRequestTest, SendsTheAddressAsItIs) {
    EchoServer server;
    CurlHttpSession session;
    ASSERT_TRUE(fetch(session, server.url(u"/a%20b/c?rpIds=5067&x=%C3%A9#part"_qs)));
    EXPECT_TRUE(server.head().startsWith("GET /a%20b/c?rpIds=5067&x=%C3%A9 HTTP/1.1\r\n"))
        << server.head().toStdString();
}

TEST(CurlRequestTest, DoesNotDecompress) {
    LoopbackServer server(serving(
        [](const QByteArray&) { return response(200, "\x1f\x8b packed", "Content-Encoding: gzip\r\n"); }));
    CurlHttpSession session;
    const auto result = fetch(session, server.url(u"/"_qs));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->body, "\x1f\x8b packed");
}

TEST(CurlRequestTest, KeepsNoCookies) {
    std::atomic<int> cookies = 0;
    LoopbackServer server(serving([&cookies](const QByteArray& head) {
        cookies += head.toLower().contains("cookie") ? 1 : 0;
        return response(200, "x", "Set-Cookie: a=b; Path=/\r\n");
    }));
    CurlHttpSession session;
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(fetch(session, server.url(u"/"_qs)));
    EXPECT_EQ(cookies, 0);
}

TEST(CurlRequestTest, ReadsAnAnswerInChunks) {
    LoopbackServer server(serving([](const QByteArray&) {
        return QByteArray(
            "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n");
    }));
    CurlHttpSession session;
    EXPECT_EQ(fetch(session, server.url(u"/"_qs))->body, "abcde");
}

TEST(CurlRequestTest, ReadsAnAnswerThatEndsWithTheConnection) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write("HTTP/1.0 200 OK\r\n\r\nuntil the end");
    });
    CurlHttpSession session;
    EXPECT_EQ(fetch(session, server.url(u"/"_qs))->body, "until the end");
}

TEST(CurlRequestTest, ComesFromAnyThread) {
    LoopbackServer server(serving([](const QByteArray& head) { return response(200, head.mid(5, 5)); }));
    CurlHttpSession session;
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 25; ++i) {
                const auto name = QString::number(10000 + thread * 100 + i);
                const auto result = fetch(session, server.url(u"/"_qs + name));
                right += result && result->body == name.toUtf8() ? 1 : 0;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(right, 200);
}

struct BadRequest {
    QString url;
    QByteArray method;
    std::pair<QByteArray, QByteArray> header;
    HttpError::Code code;
};

class MalformedRequestTest : public testing::TestWithParam<BadRequest> {};

TEST_P(MalformedRequestTest, IsRefusedOnTheSessionsThread) {
    CurlHttpSession session;
    auto request = requestFor(GetParam().url);
    request.method = GetParam().method;
    request.headers = {GetParam().header};
    const auto result = fetch(session, request);
    EXPECT_FALSE(result);
    EXPECT_EQ(codeOf(result), GetParam().code);
    EXPECT_FALSE(result.error().localizedDescription.isEmpty());
}

using Code = HttpError::Code;
INSTANTIATE_TEST_SUITE_P(
    Requests, MalformedRequestTest,
    testing::Values(BadRequest{{}, "GET", {"A", "b"}, Code::unsupportedUrl},
                    BadRequest{u"file:///etc/passwd"_qs, "GET", {"A", "b"}, Code::unsupportedUrl},
                    BadRequest{u"ftp://127.0.0.1/x"_qs, "GET", {"A", "b"}, Code::unsupportedUrl},
                    BadRequest{u"gopher://127.0.0.1:1/x"_qs, "GET", {"A", "b"}, Code::unsupportedUrl},
                    BadRequest{u"/relative"_qs, "GET", {"A", "b"}, Code::unsupportedUrl},
                    BadRequest{u"http:///nohost"_qs, "GET", {"A", "b"}, Code::unsupportedUrl},
                    BadRequest{u"http://127.0.0.1:1/"_qs, "GE T", {"A", "b"}, Code::other},
                    BadRequest{u"http://127.0.0.1:1/"_qs, "GET\r\nX: y", {"A", "b"}, Code::other},
                    BadRequest{u"http://127.0.0.1:1/"_qs, "", {"A", "b"}, Code::other},
                    BadRequest{u"http://127.0.0.1:1/"_qs, "GET", {"A", "b\r\nC: d"}, Code::other},
                    BadRequest{u"http://127.0.0.1:1/"_qs, "GET", {"A\r\nC", "d"}, Code::other},
                    BadRequest{u"http://127.0.0.1:1/"_qs, "GET", {"A B", "d"}, Code::other},
                    BadRequest{u"http://127.0.0.1:1/"_qs, "GET", {"", "d"}, Code::other},
                    BadRequest{u"http://127.0.0.1:1/"_qs, "GET", {"A", QByteArray("b\0c", 3)}, Code::other}));

} // namespace
} // namespace zofra::test
