// SPDX-License-Identifier: GPL-3.0-or-later
// Ends of sessions, crowds of requests, and what is left behind.
#include "platform/linux/net/LocalHost.h"
#include "tests/platform/net/HttpHarness.h"

#include <QDir>

#include <atomic>
#include <csignal>
#include <set>

namespace zofra::test {
namespace {

LoopbackServer::Handler silent() {
    return [](ServerConnection& connection) { connection.waitForPeerToClose(); };
}

/// Waits for a condition that another thread brings about.
bool eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(2ms);
    }
    return true;
}

std::set<QByteArray> threadNames() {
    std::set<QByteArray> names;
    const auto tasks = QDir(u"/proc/self/task"_qs).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const auto& task : tasks) {
        QFile file(u"/proc/self/task/"_qs + task + u"/comm"_qs);
        if (file.open(QIODevice::ReadOnly))
            names.insert(file.readAll().trimmed());
    }
    return names;
}

qsizetype openDescriptors() {
    return QDir(u"/proc/self/fd"_qs).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System).size();
}

TEST(CurlLifetimeTest, StartsNoThreadBeforeTheFirstRequest) {
    ASSERT_TRUE(eventually([] { return !threadNames().contains("zofra-http"); }));
    CurlHttpSession session;
    EXPECT_FALSE(threadNames().contains("zofra-http"));
    LoopbackServer server(serving([](const QByteArray&) { return response(200, {}); }));
    ASSERT_TRUE(fetch(session, server.url(u"/"_qs)));
    EXPECT_TRUE(threadNames().contains("zofra-http"));
}

TEST(CurlLifetimeTest, EndsItsThreadAndConnectionsInTheBackground) {
    LoopbackServer server(silent());
    std::atomic<int> completions = 0;
    {
        CurlHttpSession session;
        for (int i = 0; i < 20; ++i)
            session.start(requestFor(server.url(u"/"_qs)),
                          [&completions](const HttpResult&) { ++completions; });
        ASSERT_TRUE(eventually([&server] { return server.accepted() == 20; }));
    }
    EXPECT_TRUE(eventually([] { return !threadNames().contains("zofra-http"); }));
    EXPECT_EQ(completions, 0) << "requests given up are not completed";
}

TEST(CurlLifetimeTest, LetsGoOfCompletionsThatAreNotCalled) {
    LoopbackServer server(silent());
    const auto token = std::make_shared<int>(0);
    {
        CurlHttpSession session;
        for (int i = 0; i < 100; ++i) // more than may run at a time
            session.start(requestFor(server.url(u"/"_qs)), [token](const HttpResult&) {});
    }
    EXPECT_TRUE(eventually([&token] { return token.use_count() == 1; }));
}

TEST(CurlLifetimeTest, MayEndRightAfterARequest) {
    LoopbackServer server(serving([](const QByteArray&) { return response(200, {}); }));
    for (int i = 0; i < 50; ++i) {
        auto alive = std::make_unique<std::atomic<bool>>(true);
        auto late = std::make_shared<std::atomic<bool>>(false);
        {
            CurlHttpSession session;
            session.start(requestFor(server.url(u"/"_qs)),
                          [alive = alive.get(), late](const HttpResult&) { *late = *late || !*alive; });
            if (i % 2 == 1)
                std::this_thread::yield();
        }
        *alive = false;
        EXPECT_FALSE(*late);
    }
    EXPECT_TRUE(eventually([] { return !threadNames().contains("zofra-http"); }));
}

TEST(CurlLifetimeTest, MayEndInACompletion) {
    LoopbackServer server(serving([](const QByteArray&) { return response(200, {}); }));
    auto session = std::make_unique<CurlHttpSession>();
    std::atomic<int> completions = 0;
    std::promise<void> ended;
    auto* const raw = session.get();
    for (int i = 0; i < 10; ++i) {
        raw->start(requestFor(server.url(u"/"_qs)), [&](const HttpResult&) {
            ++completions;
            session.reset();
            ended.set_value();
        });
        if (i == 0)
            break; // the pointer is the completion's from here on
    }
    ASSERT_EQ(ended.get_future().wait_for(20s), std::future_status::ready);
    EXPECT_TRUE(eventually([] { return !threadNames().contains("zofra-http"); }));
    EXPECT_EQ(completions, 1);
}

TEST(CurlLifetimeTest, ACompletionMayStartTheNextRequest) {
    LoopbackServer server(serving([](const QByteArray&) { return response(200, {}); }));
    CurlHttpSession session;
    std::promise<int> done;
    std::function<void(int)> next = [&](int left) {
        session.start(requestFor(server.url(u"/"_qs)), [&, left](const HttpResult&) {
            if (left > 0)
                next(left - 1);
            else
                done.set_value(left);
        });
    };
    next(20);
    EXPECT_EQ(done.get_future().wait_for(20s), std::future_status::ready);
}

TEST(CurlLifetimeTest, ManyRequestsLeaveNothingBehind) {
    LoopbackServer server([](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        connection.write(response(200, QByteArray(2000, 'x'), "Connection: close\r\n"));
    });
    CurlHttpSession session;
    ASSERT_TRUE(fetch(session, server.url(u"/"_qs)));
    qsizetype before = 0;
    ASSERT_TRUE(eventually([&] {
        const auto last = std::exchange(before, openDescriptors());
        return last == before;
    }));
    for (int i = 0; i < 300; ++i)
        ASSERT_TRUE(fetch(session, server.url(u"/"_qs)));
    EXPECT_TRUE(eventually([before] { return openDescriptors() <= before; }))
        << openDescriptors() << " > " << before;
}

TEST(CurlCrowdTest, EveryOneOf254ParallelProbesIsAnswered) {
    std::atomic<bool> go = false;
    LoopbackServer server([&go](ServerConnection& connection) {
        connection.readUntil("\r\n\r\n");
        while (!go && !connection.isStopping())
            connection.pause(5ms);
        connection.write(response(200, "x", "Connection: close\r\n"));
    });
    CurlHttpSession session;
    std::vector<Pending> probes;
    for (int i = 0; i < 254; ++i)
        probes.emplace_back(session, requestFor(server.url(u"/"_qs)));
    ASSERT_TRUE(eventually([&server] { return server.accepted() >= 48; }));
    EXPECT_LE(server.mostOpen(), 48);
    go = true;
    int answered = 0;
    for (auto& probe : probes)
        answered += probe.get() ? 1 : 0;
    EXPECT_EQ(answered, 254);
    EXPECT_LE(server.mostOpen(), 64);
}

TEST(CurlCrowdTest, WaitingForATurnDoesNotUseUpTheTimeout) {
    LoopbackServer server(silent());
    LoopbackServer good(serving([](const QByteArray&) { return response(200, "x"); }));
    CurlHttpSession session;
    std::vector<Pending> dead;
    auto probe = requestFor(server.url(u"/"_qs));
    probe.timeout = 300ms;
    for (int i = 0; i < 96; ++i)
        dead.emplace_back(session, probe);
    auto last = requestFor(good.url(u"/"_qs));
    last.timeout = 300ms;
    EXPECT_TRUE(fetch(session, last)) << "two rounds of dead hosts come before it";
    for (auto& result : dead)
        EXPECT_EQ(codeOf(result.get()), HttpError::Code::timedOut);
}

class CurlProxyTest : public testing::Test {
protected:
    void SetUp() override { qputenv("http_proxy", proxy.url(u""_qs).toUtf8()); }
    void TearDown() override { qunsetenv("http_proxy"); }
    std::atomic<int> proxied = 0;
    LoopbackServer proxy{serving([this](const QByteArray& head) {
        ++proxied;
        return response(200, head.left(head.indexOf("\r\n")));
    })};
};

TEST_F(CurlProxyTest, LocalHostsAreAskedDirectly) {
    LoopbackServer server(serving([](const QByteArray&) { return response(200, "direct"); }));
    CurlHttpSession session;
    EXPECT_EQ(fetch(session, server.url(u"/"_qs))->body, "direct");
    EXPECT_EQ(fetch(session, u"http://localhost:%1/"_qs.arg(server.port()))->body, "direct");
    EXPECT_EQ(proxied, 0);
}

TEST_F(CurlProxyTest, OthersAreAskedThroughIt) {
    CurlHttpSession session;
    EXPECT_EQ(fetch(session, u"http://radio.example/x"_qs)->body, "GET http://radio.example/x HTTP/1.1");
}

TEST_F(CurlProxyTest, ACrowdOfDeadLocalHostsDoesNotKeepOthersWaiting) {
    LoopbackServer dead(silent());
    CurlHttpSession session;
    std::atomic<int> completions = 0;
    for (int i = 0; i < 254; ++i)
        session.start(requestFor(dead.url(u"/"_qs)), [&completions](const HttpResult&) { ++completions; });
    ASSERT_TRUE(eventually([&dead] { return dead.accepted() >= 48; }));
    EXPECT_TRUE(fetch(session, u"http://radio.example/"_qs));
    EXPECT_EQ(completions, 0);
}

class CurlHostsTest : public testing::TestWithParam<std::pair<const char*, bool>> {};
TEST_P(CurlHostsTest, AreLocalOrNot) {
    EXPECT_EQ(isLocalHost(QString::fromLatin1(GetParam().first)), GetParam().second);
}
INSTANTIATE_TEST_SUITE_P(
    Names, CurlHostsTest,
    testing::Values(std::pair("127.0.0.1", true), std::pair("127.9.9.9", true), std::pair("10.0.0.1", true),
                    std::pair("172.16.0.1", true), std::pair("172.31.255.255", true),
                    std::pair("192.168.1.20", true), std::pair("169.254.3.4", true), std::pair("::1", true),
                    std::pair("[::1]", true), std::pair("fe80::1", true), std::pair("fd00::1", true),
                    std::pair("localhost", true), std::pair("LOCALHOST", true), std::pair("speaker", true),
                    std::pair("kitchen.local", true), std::pair("kitchen.local.", true),
                    std::pair("nas.home.arpa", true), std::pair("172.15.0.1", false),
                    std::pair("172.32.0.1", false), std::pair("192.169.0.1", false),
                    std::pair("11.0.0.1", false), std::pair("8.8.8.8", false),
                    std::pair("2001:db8::1", false), std::pair("radio.example", false),
                    std::pair("local.example", false), std::pair("notlocal.com", false)));

} // namespace
} // namespace zofra::test
