// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/ApplicationBus.h"

#include "platform/linux/DBusNameOwner.h"
#include "tests/platform/desk/BusTest.h"
#include "tests/support/ScopedEnvironment.h"

#include <csignal>

namespace zofra {
namespace {

using namespace std::chrono_literals;
using test::errorOf;
using test::spinUntil;
using Claim = ApplicationBus::Claim;

const auto service = QStringLiteral("be.zofra.ZofraZofra");
const auto path = QStringLiteral("/be/zofra/ZofraZofra");
const auto standard = QStringLiteral("org.freedesktop.Application");
const auto own = QStringLiteral("be.zofra.ZofraZofra1");

class ApplicationBusTest : public test::BusTest {
protected:
    [[nodiscard]] RunningApplication running() { return RunningApplication(peer->connection(), 30s); }
};

TEST_F(ApplicationBusTest, isAcquiredOnce) {
    ApplicationBus first(*bus);
    EXPECT_EQ(first.tryAcquire(30s), Claim::acquired);
    SessionBus otherBus(SessionBus::Kind::session, queue);
    ApplicationBus second(otherBus);
    EXPECT_EQ(second.tryAcquire(30s), Claim::anotherIsRunning);
}

TEST_F(ApplicationBusTest, isFreeAgainWhenItEnds) {
    {
        ApplicationBus first(*bus);
        ASSERT_EQ(first.tryAcquire(30s), Claim::acquired);
    }
    SessionBus otherBus(SessionBus::Kind::session, queue);
    ApplicationBus second(otherBus);
    EXPECT_EQ(second.tryAcquire(30s), Claim::acquired);
}

TEST_F(ApplicationBusTest, leavesTheNameToItsOwnerWhenItOnlyAsked) {
    ApplicationBus first(*bus);
    ASSERT_EQ(first.tryAcquire(30s), Claim::acquired);
    {
        SessionBus otherBus(SessionBus::Kind::session, queue);
        ApplicationBus second(otherBus);
        ASSERT_EQ(second.tryAcquire(30s), Claim::anotherIsRunning);
    }
    const DBusNameOwner owner(peer->connection(), service);
    ASSERT_TRUE(spinUntil([&] { return !owner.owner().isEmpty(); }));
    EXPECT_EQ(owner.owner(), bus->connection()->baseService());
}

TEST_F(ApplicationBusTest, worksWithoutABusAndClaimsTheNameWhenItComes) {
    loseBus();
    ApplicationBus program(*bus);
    program.onStatus = [] { return QStringLiteral("{}"); };
    EXPECT_EQ(program.tryAcquire(30s), Claim::noBus);
    bringBusBack();
    const DBusNameOwner owner(peer->connection(), service);
    ASSERT_TRUE(spinUntil([&] { return !owner.owner().isEmpty(); }));
    EXPECT_EQ(meanwhile([&] { return running().status(); }), QStringLiteral("{}"));

    loseBus();
    bringBusBack();
    const DBusNameOwner again(peer->connection(), service);
    ASSERT_TRUE(spinUntil([&] { return !again.owner().isEmpty(); }));
    EXPECT_EQ(meanwhile([&] { return running().status(); }), QStringLiteral("{}"));
}

TEST_F(ApplicationBusTest, handsTheOptionsOfASecondStartOver) {
    ApplicationBus program(*bus);
    QVariantMap received;
    program.onRun = [&](const QVariantMap& options) {
        received = options;
        return RunReply{1, QStringLiteral("no such room")};
    };
    ASSERT_EQ(program.tryAcquire(30s), Claim::acquired);
    const QVariantMap options{{QStringLiteral("play"), QStringLiteral("qmusic")},
                              {QStringLiteral("quit"), true},
                              {QStringLiteral("output"), QStringLiteral("Küche")}};
    EXPECT_EQ(meanwhile([&] { return running().run(options); }),
              (RunReply{1, QStringLiteral("no such room")}));
    EXPECT_EQ(received, options);
    EXPECT_TRUE(meanwhile([&] { return running().run({}); }).has_value());
    EXPECT_EQ(received, QVariantMap());
}

TEST_F(ApplicationBusTest, tellsItsStatus) {
    ApplicationBus program(*bus);
    program.onStatus = [] { return QStringLiteral("{\"station\":\"zofra\"}"); };
    ASSERT_EQ(program.tryAcquire(30s), Claim::acquired);
    EXPECT_EQ(meanwhile([&] { return running().status(); }), QStringLiteral("{\"station\":\"zofra\"}"));
}

TEST_F(ApplicationBusTest, isActivatedAsDesktopsDo) {
    ApplicationBus program(*bus);
    std::vector<Activation> activations;
    QStringList opened;
    QString actionName;
    QVariantList actionParameter;
    program.onActivate = [&](const Activation& activation) { activations.push_back(activation); };
    program.onOpen = [&](const QStringList& uris, const Activation& activation) {
        opened = uris;
        activations.push_back(activation);
    };
    program.onActivateAction = [&](const QString& action, const QVariantList& parameter,
                                   const Activation& activation) {
        actionName = action;
        actionParameter = parameter;
        activations.push_back(activation);
    };
    ASSERT_EQ(program.tryAcquire(30s), Claim::acquired);
    const Activation first{QStringLiteral("id_TIME5"), QStringLiteral("token")};
    EXPECT_TRUE(meanwhile([&] { return running().activate(first); }));
    EXPECT_EQ(errorOf(call(service, path, standard, QStringLiteral("Open"),
                           {QStringList{QStringLiteral("x:y")},
                            QVariantMap{{QStringLiteral("activation-token"), QStringLiteral("t2")}}})),
              QStringLiteral("answered"));
    // A list of variants is "av" on the bus, as the interface wants it.
    EXPECT_EQ(errorOf(call(service, path, standard, QStringLiteral("ActivateAction"),
                           {QStringLiteral("play"), QVariantList{QStringLiteral("qmusic")}, QVariantMap()})),
              QStringLiteral("answered"));
    EXPECT_EQ(activations, (std::vector<Activation>{first, {QString(), QStringLiteral("t2")}, {}}));
    EXPECT_EQ(opened, QStringList{QStringLiteral("x:y")});
    EXPECT_EQ(actionName, QStringLiteral("play"));
    EXPECT_EQ(actionParameter, QVariantList{QStringLiteral("qmusic")});
}

TEST_F(ApplicationBusTest, answersWhatItDoesNotOfferWithErrors) {
    ApplicationBus program(*bus);
    ASSERT_EQ(program.tryAcquire(30s), Claim::acquired);
    EXPECT_EQ(meanwhile([&] { return running().status(); }), std::nullopt);
    EXPECT_EQ(meanwhile([&] { return running().run({}); }), std::nullopt);
    EXPECT_FALSE(meanwhile([&] { return running().activate({}); }));
    EXPECT_EQ(errorOf(call(service, path, own, QStringLiteral("Stop"))),
              QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"));
    EXPECT_EQ(errorOf(call(service, path, own, QStringLiteral("Run"), {1})),
              QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
    EXPECT_EQ(errorOf(call(service, path, standard, QStringLiteral("Activate"))),
              QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
}

TEST_F(ApplicationBusTest, isAbsentToASecondStartWhenNothingRuns) {
    EXPECT_EQ(running().status(), std::nullopt);
    EXPECT_EQ(running().run({}), std::nullopt);
    EXPECT_FALSE(running().activate({}));
}

TEST_F(ApplicationBusTest, isNotWaitedForForEver) {
    ApplicationBus program(*bus);
    program.onStatus = [] { return QString(); };
    ASSERT_EQ(program.tryAcquire(30s), Claim::acquired);
    // Nobody serves this thread's event loop while it asks itself.
    EXPECT_EQ(RunningApplication(peer->connection(), 50ms).status(), std::nullopt);
}

TEST_F(ApplicationBusTest, doesNotWaitForEverForABusThatHangs) {
    ASSERT_EQ(kill(daemon->processId(), SIGSTOP), 0);
    ApplicationBus program(*bus);
    EXPECT_EQ(program.tryAcquire(50ms), Claim::noBus);
    ASSERT_EQ(kill(daemon->processId(), SIGCONT), 0);
}

TEST(ActivationTest, comesFromTheEnvironment) {
    test::ScopedEnvironment environment;
    environment.set("DESKTOP_STARTUP_ID", "a");
    environment.set("XDG_ACTIVATION_TOKEN", "b");
    const auto taken = Activation::takeFromEnvironment();
    EXPECT_EQ(taken, (Activation{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(Activation::fromPlatformData(taken.platformData()), taken);
    EXPECT_EQ(Activation::takeFromEnvironment(), Activation()) << "no child finds it";
    EXPECT_EQ(Activation().platformData(), QVariantMap());
}

} // namespace
} // namespace zofra
