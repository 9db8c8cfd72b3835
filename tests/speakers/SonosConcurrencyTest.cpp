// SPDX-License-Identifier: GPL-3.0-or-later
// These run with real threads, and under ThreadSanitizer they show that the manager may end at any time.
#include "tests/speakers/ManagerTest.h"
#include "tests/support/ThreadedFakeHttpSession.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace zofra {
namespace {

using test::answered;
using test::descriptionUrl;
using test::ThreadedFakeHttpSession;

const QString localIp = QStringLiteral("10.0.0.2");

/// Counts arrivals from many threads.
class Arrivals {
public:
    void arrive() {
        {
            const std::scoped_lock lock(m_mutex);
            ++m_count;
        }
        m_changed.notify_all();
    }
    /// False when it takes longer than 20 s.
    [[nodiscard]] bool waitFor(int count) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return m_count >= count; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_count = 0;
};

/// A world with a pool of threads and a session with a thread.
class SonosConcurrencyTest : public ::testing::Test {
protected:
    struct ThreadedWorld : test::World {
        ThreadedWorld(ThreadedFakeHttpSession::Answer answer, ThreadedFakeHttpSession::Start start,
                      TaskPool& threads)
            : pool(threads)
            , session(std::move(answer), start) {}

        TaskPool& pool;
        LanguageManager languages{defaults, {}};
        RadioPlayer localPlayer{
            RadioPlayer::Environment{players, defaults, queue, nowPlaying, commands, wake, output, hosts}};
        ThreadedFakeHttpSession session;
        std::unique_ptr<SonosManager> manager;
    };

    /// A house of players at every address, without topology.
    static HttpResult everyone(const HttpRequest& request) {
        if (request.method == "POST")
            return answered(test::actionOf(request) == QLatin1String("GetZoneGroupState") ? 500 : 200);
        const auto host = request.url.host();
        return answered(200, test::description(host, QStringLiteral("Room ") + host));
    }

    void makeWorld(ThreadedFakeHttpSession::Start start) {
        world = std::make_unique<ThreadedWorld>(everyone, start, pool);
    }
    SonosManager& startManager() {
        world->manager = std::make_unique<SonosManager>(
            false,
            SonosManager::Environment{{world->session, world->queue, world->pool, world->network, world->log},
                                      world->defaults,
                                      world->languages,
                                      world->localPlayer,
                                      world->hosts});
        return *world->manager;
    }
    void addInterface(const QString& ip, const QString& broadcast) {
        world->network.addInterface(QStringLiteral("eth"), ip, broadcast);
    }
    void finishRun() {
        pool.join();
        world->queue.drain();
    }

    test::FakeTaskPool pool{test::FakeTaskPool::Mode::threads};
    std::unique_ptr<ThreadedWorld> world;
};

constexpr auto answering = ThreadedFakeHttpSession::Start::answering;
constexpr auto held = ThreadedFakeHttpSession::Start::held;

TEST_F(SonosConcurrencyTest, AllInterfacesAreSearchedAtTheSameTime) {
    makeWorld(answering);
    Arrivals searching;
    bool allAtOnce = true;
    std::mutex mutex;
    for (int i = 0; i < 6; ++i) {
        const auto ip = QStringLiteral("10.0.%1.2").arg(i);
        addInterface(ip, QString());
        world->network.scripts[ip].datagrams = {test::ssdpAnswer(descriptionUrl(i + 1).toString())};
        world->network.scripts[ip].onReceive = [&, first = true]() mutable {
            if (!std::exchange(first, false))
                return;
            searching.arrive();
            const bool all = searching.waitFor(6);
            const std::scoped_lock lock(mutex);
            allAtOnce = allAtOnce && all;
        };
    }
    startManager().discoverDevices(false);
    finishRun();
    EXPECT_TRUE(allAtOnce);
    EXPECT_EQ(world->manager->rooms.get().size(), 6);
    EXPECT_FALSE(world->manager->isScanning);
}

TEST_F(SonosConcurrencyTest, AtMostThirtyTwoProbesAreInFlight) {
    makeWorld(held);
    addInterface(localIp, QStringLiteral("10.0.0.255"));
    startManager().discoverDevices(true);
    for (std::size_t count = 32; count <= 254; ++count) {
        ASSERT_TRUE(world->session.waitForRequests(count)) << count;
        EXPECT_EQ(world->session.requests().size(), count) << "the next one waits for an answer";
        world->session.letAnswer(1);
    }
    world->session.letAnswerAll();
    finishRun();
    EXPECT_EQ(world->session.mostOpen(), 32U);
    EXPECT_EQ(world->manager->rooms.get().size(), 254);
}

TEST_F(SonosConcurrencyTest, AtMostThirtyTwoDescriptionsAndTopologiesAreInFlight) {
    makeWorld(held);
    addInterface(localIp, QString());
    for (int host = 1; host <= 100; ++host)
        world->network.scripts[localIp].datagrams.push_back(
            test::ssdpAnswer(descriptionUrl(host).toString()));
    startManager().discoverDevices(false);
    ASSERT_TRUE(world->session.waitForRequests(32));
    for (std::size_t count = 33; count <= 100; ++count) {
        world->session.letAnswer(1);
        ASSERT_TRUE(world->session.waitForRequests(count)) << count;
    }
    world->session.letAnswerAll();
    finishRun();
    EXPECT_EQ(world->session.mostOpen(), 32U);
    EXPECT_EQ(world->session.requests().size(), 200U);
    EXPECT_EQ(world->manager->rooms.get().size(), 100);
}

TEST_F(SonosConcurrencyTest, TheManagerMayEndDuringTheSearch) {
    makeWorld(answering);
    Arrivals searching;
    Arrivals ended;
    for (int i = 0; i < 4; ++i) {
        const auto ip = QStringLiteral("10.0.%1.2").arg(i);
        addInterface(ip, QStringLiteral("10.0.%1.255").arg(i));
        world->network.scripts[ip].onReceive = [&] {
            searching.arrive();
            (void)ended.waitFor(1);
        };
    }
    startManager().discoverDevices(true);
    ASSERT_TRUE(searching.waitFor(4));
    world->manager.reset(); // Does not wait for the searches, all of which wait for this.
    ended.arrive();
    finishRun();
    EXPECT_EQ(world->network.receives(), 4) << "each search notices";
    EXPECT_TRUE(world->session.requests().empty());
    EXPECT_EQ(world->log.lines.size(), 4U) << "the sends, and nothing after the end";
}

TEST_F(SonosConcurrencyTest, TheManagerMayEndWhileProbesAreOut) {
    makeWorld(held);
    addInterface(localIp, QStringLiteral("10.0.0.255"));
    startManager().discoverDevices(true);
    ASSERT_TRUE(world->session.waitForRequests(32));
    world->manager.reset(); // Would wait for ever if it waited for any of them.
    pool.join();
    world->session.letAnswerAll();
    finishRun();
    EXPECT_EQ(world->session.requests().size(), 32U) << "no further one is sent";
}

TEST_F(SonosConcurrencyTest, TheManagerMayEndWhileDescriptionsAreOut) {
    makeWorld(held);
    addInterface(localIp, QString());
    for (int host = 1; host <= 100; ++host)
        world->network.scripts[localIp].datagrams.push_back(
            test::ssdpAnswer(descriptionUrl(host).toString()));
    startManager().discoverDevices(false);
    ASSERT_TRUE(world->session.waitForRequests(32));
    world->manager.reset();
    pool.join();
    world->session.letAnswerAll();
    finishRun();
    EXPECT_EQ(world->session.requests().size(), 32U);
}

} // namespace
} // namespace zofra
