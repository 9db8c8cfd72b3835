// SPDX-License-Identifier: GPL-3.0-or-later
// Shortages that pass, and networks that change.
#include "tests/platform/net/HttpHarness.h"
#include "tests/platform/net/SocketHarness.h"

#include <QDir>

#include <pthread.h>
#include <sys/resource.h>

namespace zofra::test {
namespace {

/// As long as it lives no descriptor can be opened.
class NoDescriptors {
public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &m_before);
        // Above the highest one in use there is none; the gaps are filled.
        auto limit = m_before;
        limit.rlim_cur = 64;
        while (true) {
            const int descriptor = dup(0);
            if (descriptor < 0)
                break;
            if (static_cast<rlim_t>(descriptor) >= limit.rlim_cur) {
                limit.rlim_cur = static_cast<rlim_t>(descriptor);
                close(descriptor);
                break;
            }
            m_fillers.push_back(descriptor);
        }
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~NoDescriptors() {
        setrlimit(RLIMIT_NOFILE, &m_before);
        for (const int descriptor : m_fillers)
            close(descriptor);
    }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit m_before{};
    std::vector<int> m_fillers;
};

/// As long as it lives no thread can be started: their stacks would be larger than any memory.
class NoThreads {
public:
    NoThreads() {
        pthread_getattr_default_np(&m_before);
        pthread_attr_t huge = m_before;
        pthread_attr_setstacksize(&huge, std::size_t{1} << 48U);
        pthread_setattr_default_np(&huge);
    }
    ~NoThreads() { pthread_setattr_default_np(&m_before); }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    pthread_attr_t m_before{};
};

class CurlRecoveryTest : public testing::Test {
protected:
    /// What a request comes to; its answer may need the event loop.
    HttpResult outcome() {
        std::promise<HttpResult> promise;
        auto future = promise.get_future();
        session.start(requestFor(server.url(u"/"_qs)),
                      [&promise](HttpResult result) { promise.set_value(std::move(result)); });
        EXPECT_TRUE(waitUntil([&future] { return future.wait_for(0s) == std::future_status::ready; }));
        return future.get();
    }
    LoopbackServer server{serving([](const QByteArray&) { return response(200, "x"); })};
    CurlHttpSession session;
};

TEST_F(CurlRecoveryTest, ComesBackOnceThereAreDescriptors) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "skipped: the sanitizers need descriptors themselves, to look at an object's type";
#endif
    {
        const NoDescriptors shortage;
        EXPECT_FALSE(outcome());
        EXPECT_FALSE(outcome());
    }
    EXPECT_TRUE(outcome());
}

TEST_F(CurlRecoveryTest, ComesBackOnceThereAreThreads) {
    {
        const NoThreads shortage;
        EXPECT_FALSE(outcome());
        EXPECT_FALSE(outcome());
    }
    EXPECT_TRUE(outcome());
}

TEST_F(CurlRecoveryTest, ASocketThatWaitedForAThreadOpensWithIt) {
    LoopbackServer live([](ServerConnection& connection) {
        connection.write(upgradeAnswer(connection) + serverFrame(1, "o"));
        connection.waitForPeerToClose();
    });
    Listener listener(plainSocket(live));
    {
        const NoThreads shortage;
        listener.resumeAndListen();
    }
    listener.session->start(requestFor(server.url(u"/"_qs)), {});
    EXPECT_TRUE(listener.waitForMessages(1));
}

TEST_F(CurlRecoveryTest, KeptConnectionsAreNotUsedAfterAChangeOfNetwork) {
    EXPECT_TRUE(outcome());
    EXPECT_TRUE(outcome());
    EXPECT_EQ(server.accepted(), 1) << "kept";
    session.dropKeptConnections();
    EXPECT_TRUE(outcome());
    EXPECT_EQ(server.accepted(), 2);
}

} // namespace
} // namespace zofra::test
