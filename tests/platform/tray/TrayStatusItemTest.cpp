// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/TrayStatusItem.h"

#include "platform/linux/QtMainQueue.h"
#include "tests/platform/tray/TrayBusTest.h"

#include <QDBusObjectPath>

#include <chrono>
#include <csignal>

namespace zofra::test {
namespace {

using namespace std::chrono_literals;

/// A panel with its watcher, on a connection of its own.
class FakePanel final : public QDBusVirtualObject {
public:
    explicit FakePanel(const PrivateBus& bus, bool hasHost = true)
        : peer(bus, QStringLiteral("panel%1").arg(++s_count))
        , m_hasHost(hasHost) {
        peer.connection().registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), this);
        peer.connection().registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }
    ~FakePanel() override {
        peer.connection().unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }
    FakePanel(const FakePanel&) = delete;
    FakePanel& operator=(const FakePanel&) = delete;

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == QLatin1String("RegisterStatusNotifierItem")) {
            registered << message.arguments().at(0).toString();
            senders << message.service();
            connection.send(message.createReply());
            return true;
        }
        if (message.member() == QLatin1String("Get")) {
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(m_hasHost))));
            return true;
        }
        return false;
    }
    void hostArrives() {
        m_hasHost = true;
        peer.connection().send(QDBusMessage::createSignal(QStringLiteral("/StatusNotifierWatcher"),
                                                          QStringLiteral("org.kde.StatusNotifierWatcher"),
                                                          QStringLiteral("StatusNotifierHostRegistered")));
    }

    PrivateBus::Peer peer;
    QStringList registered;
    QStringList senders;

private:
    bool m_hasHost;
    static inline int s_count = 0;
};

class TrayStatusItemTest : public TrayBusTest {
protected:
    void SetUp() override {
        TrayBusTest::SetUp();
        if (!IsSkipped())
            session = std::make_unique<SessionBus>(SessionBus::Kind::session, queue);
    }
    void TearDown() override {
        item.reset();
        session.reset();
        TrayBusTest::TearDown();
    }
    void make(const QString& setting = {}) {
        TraySession traySession;
        traySession.setting = setting;
        item = std::make_unique<TrayStatusItem>(TrayStatusItem::Environment{
            *session, queue, icons, traySession, u"/icons"_qs, [this] { ++registrations; },
            [this](const QByteArray& token) { tokens.push_back(token); }});
        item->menuProvider = [this] {
            MenuItem one;
            one.title = menuTitle;
            return Menu{one};
        };
        item->onScroll = [this](int steps) { scrolled += steps; };
        item->onSecondaryActivate = [this] { ++secondary; };
        item->onUnavailable = [this] { ++unavailable; };
        StatusItemButton* button = item->button();
        button->setAction([this](std::optional<ButtonEvent> event) { clicks.push_back(event); });
        button->sendActionOn(20);
        button->setTitle(u"Zofra: Song"_qs);
        button->setImagePosition(ImagePosition::leading);
        button->setImage(u"play.fill"_qs, u"Paused"_qs);
        button->setToolTip(u"Line one\nLine two"_qs);
    }
    bool waitFor(StatusItemMode mode) {
        return spinUntil([&] { return item->mode() == mode; });
    }
    QString service() { return session->connection()->baseService(); }
    QVariantMap properties() {
        const auto reply = call(service(), u"/StatusNotifierItem"_qs, u"org.freedesktop.DBus.Properties"_qs,
                                u"GetAll"_qs, {u"org.kde.StatusNotifierItem"_qs});
        return qdbus_cast<QVariantMap>(reply.arguments().value(0));
    }
    QDBusMessage itemCall(const QString& member, const QVariantList& arguments) {
        return call(service(), u"/StatusNotifierItem"_qs, u"org.kde.StatusNotifierItem"_qs, member,
                    arguments);
    }

    std::unique_ptr<SessionBus> session;
    SquareIcons icons;
    std::unique_ptr<TrayStatusItem> item;
    QString menuTitle = u"Menu"_qs;
    std::vector<std::optional<ButtonEvent>> clicks;
    std::vector<QByteArray> tokens;
    int registrations = 0;
    int scrolled = 0;
    int secondary = 0;
    int unavailable = 0;
};

TEST_F(TrayStatusItemTest, RegistersUnderItsUniqueName) {
    const FakePanel panel(*bus);
    make();
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    EXPECT_EQ(panel.registered, QStringList{service()});
    EXPECT_EQ(panel.senders, QStringList{service()});
    EXPECT_EQ(registrations, 1);
    EXPECT_EQ(unavailable, 0);
}

TEST_F(TrayStatusItemTest, ShowsWhatItWasTold) {
    const FakePanel panel(*bus);
    make();
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    auto map = properties();
    EXPECT_EQ(map.value(u"Title"_qs).toString(), u"Zofra: Song"_qs);
    EXPECT_EQ(map.value(u"XAyatanaLabel"_qs).toString(), u"Zofra: Song"_qs);
    EXPECT_EQ(map.value(u"IconName"_qs).toString(), u"be.zofra.ZofraZofra.tray.stopped"_qs);
    EXPECT_EQ(qdbus_cast<BusToolTip>(map.value(u"ToolTip"_qs)).title, u"Line one\nLine two"_qs);
    EXPECT_EQ(qdbus_cast<QList<BusPixmap>>(map.value(u"IconPixmap"_qs)).size(), 3);
    item->button()->setImage(u"speaker.wave.2.fill"_qs, u"Playing"_qs);
    item->setBuffering(true);
    EXPECT_EQ(properties().value(u"IconName"_qs).toString(), u"be.zofra.ZofraZofra.tray.buffering"_qs);
    item->button()->setTitle(QString(200, u'x') + u'\n');
    item->setBuffering(false);
    map = properties();
    EXPECT_EQ(map.value(u"IconName"_qs).toString(), u"be.zofra.ZofraZofra.tray.playing"_qs);
    EXPECT_EQ(map.value(u"IconAccessibleDesc"_qs).toString(), u"Playing"_qs);
    EXPECT_EQ(map.value(u"Title"_qs).toString().size(), 120);
    EXPECT_EQ(map.value(u"XAyatanaLabel"_qs).toString().size(), 80) << "a panel has less room";
}

TEST_F(TrayStatusItemTest, HostmenuServesTheMenu) {
    const FakePanel panel(*bus);
    make();
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    const QString path = qvariant_cast<QDBusObjectPath>(properties().value(u"Menu"_qs)).path();
    EXPECT_EQ(path, u"/MenuBar"_qs);
    const auto layout = [&] {
        return qdbus_cast<BusMenuLayout>(
            call(service(), path, u"com.canonical.dbusmenu"_qs, u"GetLayout"_qs, {0, -1, QStringList()})
                .arguments()
                .value(1));
    };
    EXPECT_EQ(layout().children.at(0).properties.value(u"label"_qs).toString(), u"Menu"_qs);
    menuTitle = u"Other"_qs;
    item->menuDidChange();
    queue.drain();
    EXPECT_EQ(layout().children.at(0).properties.value(u"label"_qs).toString(), u"Other"_qs);
}

TEST_F(TrayStatusItemTest, DirectPassesClicksToTheButtonAndHasNoMenuObject) {
    const FakePanel panel(*bus);
    make(u"direct"_qs);
    ASSERT_TRUE(waitFor(StatusItemMode::direct));
    itemCall(u"Activate"_qs, {10, 20});
    itemCall(u"ContextMenu"_qs, {10, 20});
    ASSERT_EQ(clicks.size(), 2U);
    EXPECT_EQ(clicks[0], ButtonEvent::leftMouseUp);
    EXPECT_EQ(clicks[1], ButtonEvent::rightMouseUp);
    EXPECT_EQ(properties().value(u"IconName"_qs).toString(), u"be.zofra.ZofraZofra.tray.stopped"_qs);
    EXPECT_EQ(call(service(), u"/MenuBar"_qs, u"com.canonical.dbusmenu"_qs, u"AboutToShow"_qs, {0}).type(),
              QDBusMessage::ErrorMessage);
}

TEST_F(TrayStatusItemTest, ClicksThatWereNotAskedForAreNotSent) {
    const FakePanel panel(*bus);
    make(u"direct"_qs);
    item->button()->sendActionOn(4);
    ASSERT_TRUE(waitFor(StatusItemMode::direct));
    itemCall(u"ContextMenu"_qs, {1, 1});
    EXPECT_TRUE(clicks.empty());
    itemCall(u"Activate"_qs, {1, 1});
    EXPECT_EQ(clicks.size(), 1U);
}

TEST_F(TrayStatusItemTest, WheelMiddleClickAndTokenArePassedOn) {
    const FakePanel panel(*bus);
    make();
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    itemCall(u"Scroll"_qs, {120, u"vertical"_qs});
    itemCall(u"Scroll"_qs, {-60, u"vertical"_qs});
    itemCall(u"Scroll"_qs, {-60, u"vertical"_qs});
    itemCall(u"Scroll"_qs, {-1, u"vertical"_qs});
    EXPECT_EQ(scrolled, -1);
    itemCall(u"SecondaryActivate"_qs, {1, 1});
    EXPECT_EQ(secondary, 1);
    itemCall(u"ProvideXdgActivationToken"_qs, {u"token-1"_qs});
    EXPECT_EQ(tokens, std::vector<QByteArray>{"token-1"});
}

TEST(PlaceOfClickTest, IsWhereThePanelSaysUnlessThePointerIsElsewhere) {
    EXPECT_EQ(placeOfClick({1000, 10}, {990, 20}), QPoint(1000, 10)) << "the item's corner, say";
    EXPECT_EQ(placeOfClick({1500, 15}, {1000, 10}), QPoint(1000, 10)) << "in the pixels of a finer screen";
    EXPECT_EQ(placeOfClick({3, 4}, {1000, 10}), QPoint(1000, 10)) << "from a corner of the panel's";
}

TEST_F(TrayStatusItemTest, OnScreensWithoutFreeMenusTheWindowStandsIn) {
    const FakePanel panel(*bus);
    make(u"direct"_qs);
    ASSERT_TRUE(waitFor(StatusItemMode::direct));
    item->button()->popUpMenu({MenuItem()}, QPointF(0, 4));
    EXPECT_EQ(secondary, 1);
}

TEST_F(TrayStatusItemTest, APanelThatComesLateIsMet) {
    make();
    settle();
    EXPECT_EQ(item->mode(), StatusItemMode::none);
    queue.advance(4s);
    const FakePanel panel(*bus);
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    EXPECT_EQ(panel.registered.size(), 1);
    queue.advance(1min);
    EXPECT_EQ(unavailable, 0) << "no longer waiting";
}

TEST_F(TrayStatusItemTest, AfterFiveSecondsWithoutAPanelTheWindowStandsInOnce) {
    make();
    settle();
    queue.advance(4999ms);
    EXPECT_EQ(unavailable, 0);
    queue.advance(1ms);
    EXPECT_EQ(unavailable, 0) << "first the bus has to answer";
    ASSERT_TRUE(waitFor(StatusItemMode::window));
    EXPECT_EQ(unavailable, 1);
    {
        const FakePanel panel(*bus);
        ASSERT_TRUE(waitFor(StatusItemMode::hostmenu)) << "a panel that appears later takes over";
    }
    ASSERT_TRUE(waitFor(StatusItemMode::none));
    for (int question = 0; question < 5; ++question) {
        const std::size_t timers = queue.startedTimers().size();
        queue.advance(5s);
        ASSERT_TRUE(spinUntil([&] { return queue.startedTimers().size() > timers; }));
        EXPECT_EQ(item->mode(), StatusItemMode::none) << "a panel that has been there returns, mostly";
    }
    queue.advance(5s);
    ASSERT_TRUE(waitFor(StatusItemMode::window));
    EXPECT_EQ(unavailable, 1) << "nobody wants the window a second time";
}

TEST_F(TrayStatusItemTest, ARestartedPanelIsMetAgain) {
    auto panel = std::make_unique<FakePanel>(*bus);
    make();
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    panel.reset();
    ASSERT_TRUE(waitFor(StatusItemMode::none));
    panel = std::make_unique<FakePanel>(*bus);
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    EXPECT_EQ(panel->registered, QStringList{service()});
    EXPECT_EQ(registrations, 2);
}

TEST_F(TrayStatusItemTest, AWatcherWithoutAPanelShowsNothing) {
    FakePanel watcherOnly(*bus, false);
    make();
    ASSERT_TRUE(spinUntil([&] { return !watcherOnly.registered.isEmpty(); }));
    settle();
    EXPECT_EQ(item->mode(), StatusItemMode::none);
    queue.advance(5s);
    ASSERT_TRUE(waitFor(StatusItemMode::window));
    watcherOnly.hostArrives();
    EXPECT_TRUE(waitFor(StatusItemMode::hostmenu));
}

TEST_F(TrayStatusItemTest, ABusThatIsStartedAnewIsMetAgain) {
    auto panel = std::make_unique<FakePanel>(*bus);
    make();
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    panel.reset();
    client.reset();
    bus->stop();
    ASSERT_TRUE(spinUntil([&] {
        queue.drain();
        return item->mode() == StatusItemMode::none && !session->connection();
    }));
    ASSERT_TRUE(bus->start());
    client = std::make_unique<PrivateBus::Peer>(*bus, QStringLiteral("client%1").arg(++s_peers));
    panel = std::make_unique<FakePanel>(*bus);
    QObject context;
    ASSERT_TRUE(spinUntil([&] {
        queue.advance(100ms);
        QTimer::singleShot(1, &context, [] {});
        return item->mode() == StatusItemMode::hostmenu;
    }));
    EXPECT_EQ(panel->registered, QStringList{service()});
    EXPECT_EQ(properties().value(u"Title"_qs).toString(), u"Zofra: Song"_qs);
}

TEST_F(TrayStatusItemTest, AFlashIsSeenAtOnceAndForAMoment) {
    const FakePanel panel(*bus);
    make();
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    item->flashVolume(85, u"Volume (85 %)"_qs);
    auto map = properties();
    EXPECT_EQ(map.value(u"XAyatanaLabel"_qs).toString(), u"Volume (85 %)"_qs);
    EXPECT_EQ(qdbus_cast<BusToolTip>(map.value(u"ToolTip"_qs)).title,
              u"Volume (85 %)\nLine one\nLine two"_qs);
    queue.advance(1s);
    item->flashVolume(90, u"Volume (90 %)"_qs);
    queue.advance(1s);
    EXPECT_EQ(properties().value(u"Title"_qs).toString(), u"Volume (90 %)"_qs) << "the newer one runs on";
    queue.advance(1s);
    map = properties();
    EXPECT_EQ(map.value(u"Title"_qs).toString(), u"Zofra: Song"_qs);
    EXPECT_EQ(qdbus_cast<BusToolTip>(map.value(u"ToolTip"_qs)).title, u"Line one\nLine two"_qs);
}

TEST_F(TrayStatusItemTest, AFlashTakesAsMuchRoomBesideTheIconAsTheTitle) {
    const FakePanel panel(*bus);
    make();
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    const QString title = u"Zofra: Somebody – A Song With A Long Name"_qs;
    item->button()->setTitle(title);
    item->flashVolume(85, u"Volume (85 %)"_qs);
    const auto map = properties();
    const QString label = map.value(u"XAyatanaLabel"_qs).toString();
    EXPECT_EQ(label.size(), title.size());
    EXPECT_EQ(label.trimmed(), u"Volume (85 %)"_qs);
    EXPECT_EQ(map.value(u"Title"_qs).toString(), u"Volume (85 %)"_qs);
}

TEST_F(TrayStatusItemTest, WithoutABusTheWindowStandsInAsWell) {
    client.reset();
    session.reset();
    bus->stop();
    session = std::make_unique<SessionBus>(SessionBus::Kind::session, queue);
    make();
    QObject context;
    ASSERT_TRUE(spinUntil([&] {
        queue.advance(1s);
        QTimer::singleShot(1, &context, [] {});
        return item->mode() == StatusItemMode::window;
    }));
    EXPECT_EQ(unavailable, 1);
}

TEST_F(TrayStatusItemTest, WhileTheBusHangsNothingIsTriedThatWaitsForIt) {
    make();
    settle();
    ASSERT_EQ(::kill(bus->processId(), SIGSTOP), 0);
    QObject context;
    for (int question = 0; question < 2; ++question) {
        const std::size_t timers = queue.startedTimers().size();
        queue.advance(5s);
        EXPECT_TRUE(spinUntil([&] {
            QTimer::singleShot(1, &context, [] {});
            return queue.startedTimers().size() > timers;
        })) << "it waits anew once the bus has not answered";
        EXPECT_EQ(item->mode(), StatusItemMode::none);
    }
    ASSERT_EQ(::kill(bus->processId(), SIGCONT), 0);
    queue.advance(5s);
    EXPECT_TRUE(waitFor(StatusItemMode::window));
    EXPECT_EQ(unavailable, 1);
}

TEST_F(TrayStatusItemTest, ItIsGoneFromTheBusOnceDestroyed) {
    const FakePanel panel(*bus);
    make();
    ASSERT_TRUE(waitFor(StatusItemMode::hostmenu));
    item.reset();
    EXPECT_EQ(itemCall(u"SecondaryActivate"_qs, {1, 1}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(secondary, 0);
}

} // namespace
} // namespace zofra::test
