// SPDX-License-Identifier: GPL-3.0-or-later
// Orders, direct requests and cancelled ones.
#include "tests/platform/net/HttpHarness.h"
#include "tests/platform/net/NamespaceRun.h"
#include "tests/support/ScopedEnvironment.h"

#include <atomic>
#include <stop_token>
#include <thread>

namespace zofra::test {
namespace {

using Code = HttpError::Code;

HttpRequest order(const QString& url) {
    auto request = requestFor(url);
    request.method = "POST";
    request.body = "play";
    request.purpose = HttpRequest::Purpose::order;
    return request;
}

/// A server that answers each request with `answer` and then hangs up.
LoopbackServer::Handler answering(const QByteArray& answer) {
    return [answer](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write(answer);
    };
}

TEST(CurlOrdersTest, FollowNoRedirect) {
    std::atomic<int> reached = 0;
    LoopbackServer elsewhere(serving([&reached](const QByteArray&) {
        ++reached;
        return response(200, {});
    }));
    LoopbackServer server(answering(redirect(elsewhere.url(u"/"_qs))));
    CurlHttpSession session;
    const auto result = fetch(session, order(server.url(u"/"_qs)));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 302);
    EXPECT_EQ(reached, 0);
}

TEST(CurlOrdersTest, CountByTheirStatusWhateverTheBody) {
    const QByteArray bodyBeyondTheCap(5000, 'x');
    for (const auto& answer : {response(200, "done"), response(200, bodyBeyondTheCap),
                               QByteArray("HTTP/1.1 200 X\r\nContent-Length: 100\r\n\r\ncut"),
                               QByteArray("HTTP/1.1 200 X\r\nTransfer-Encoding: chunked\r\n\r\nno chunk")}) {
        LoopbackServer server(answering(answer));
        CurlHttpSession session;
        auto request = order(server.url(u"/"_qs));
        request.maxBodyBytes = 1000;
        const auto result = fetch(session, request);
        ASSERT_TRUE(result) << result.error().localizedDescription.toStdString();
        EXPECT_EQ(result->status, 200);
        EXPECT_EQ(result->body, QByteArray());
    }
}

TEST(CurlOrdersTest, FailWithoutAnAnswer) {
    for (const QByteArray answer : {"", "HTTP/1.1 100 X\r\n\r\n", "garbage\r\n\r\n"}) {
        LoopbackServer server(answering(answer));
        CurlHttpSession session;
        EXPECT_FALSE(fetch(session, order(server.url(u"/"_qs)))) << answer.toStdString();
    }
}

TEST(CurlOrdersTest, ABodyThatNeverEndsCostsNoMoreThanTheTimeout) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write("HTTP/1.1 200 X\r\nContent-Length: 100\r\n\r\n");
        connection.waitForPeerToClose();
    });
    CurlHttpSession session;
    auto request = order(server.url(u"/"_qs));
    request.timeout = 200ms;
    EXPECT_TRUE(fetch(session, request));
}

TEST(NamespaceTest, DISABLED_DirectRequestsAskNoProxy) {
    std::atomic<int> proxied = 0;
    LoopbackServer proxy(serving([&proxied](const QByteArray&) {
        ++proxied;
        return response(200, {});
    }));
    ScopedEnvironment environment;
    environment.set("http_proxy", proxy.url(u""_qs).toUtf8());
    CurlHttpSession session;
    // Not an address that anybody would take for one of the home; nobody is there.
    auto request = requestFor(u"http://100.64.0.1:9/"_qs);
    request.timeout = 5s;
    EXPECT_TRUE(fetch(session, request));
    EXPECT_EQ(proxied, 1);
    request.route = HttpRequest::Route::direct;
    EXPECT_FALSE(fetch(session, request));
    EXPECT_EQ(proxied, 1);
}

TEST(CurlOrdersTest, DirectRequestsAskNoProxy) {
    runInNamespace(u"DirectRequestsAskNoProxy"_qs,
                   u"ip link set lo up && ip addr add 100.64.0.1/32 dev lo"_qs);
}

TEST(CurlOrdersTest, ACancelledRequestEndsAtOnceWaitingOrNot) {
    LoopbackServer server([](ServerConnection& connection) { connection.waitForPeerToClose(); });
    LoopbackServer good(serving([](const QByteArray&) { return response(200, "x"); }));
    CurlHttpSession session;
    std::stop_source stop;
    std::vector<Pending> pending;
    auto request = requestFor(server.url(u"/"_qs));
    request.stop = stop.get_token();
    for (int i = 0; i < 60; ++i) // more than may run at a time
        pending.emplace_back(session, request);
    stop.request_stop();
    for (auto& result : pending)
        EXPECT_EQ(codeOf(result.get()), Code::cancelled);
    EXPECT_EQ(codeOf(fetch(session, request)), Code::cancelled) << "cancelled before it starts";
    EXPECT_TRUE(fetch(session, good.url(u"/"_qs)));
}

TEST(CurlOrdersTest, CancellingWhatHasEndedDoesNothing) {
    LoopbackServer server(serving([](const QByteArray&) { return response(200, "x"); }));
    CurlHttpSession session;
    std::stop_source stop;
    auto request = requestFor(server.url(u"/"_qs));
    request.stop = stop.get_token();
    EXPECT_TRUE(fetch(session, request));
    stop.request_stop();
    EXPECT_TRUE(fetch(session, server.url(u"/"_qs)));
}

} // namespace
} // namespace zofra::test
