// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PortalAppearance.h"

#include "tests/support/EventLoop.h"
#include "tests/support/PrivateBus.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

using Scheme = DesktopAppearance::ColorScheme;

struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Color& color) {
    argument.beginStructure();
    argument << color.red << color.green << color.blue;
    argument.endStructure();
    return argument;
}
const QDBusArgument& operator>>(const QDBusArgument& argument, Color& color) {
    argument.beginStructure();
    argument >> color.red >> color.green >> color.blue;
    argument.endStructure();
    return argument;
}

} // namespace
} // namespace zofra::test
Q_DECLARE_METATYPE(zofra::test::Color)

namespace zofra::test {
namespace {

/// A portal on a bus of the test's own.
class FakePortal final : public QDBusVirtualObject {
public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != u"org.freedesktop.portal.Settings"_qs || message.member() != u"ReadAll"_qs)
            return false;
        asked << message.arguments().constFirst().toStringList();
        if (isSilent)
            return true;
        const QMap<QString, QVariantMap> groups{{u"org.freedesktop.appearance"_qs, settings}};
        connection.send(message.createReply(QVariant::fromValue(groups)));
        return true;
    }

    QVariantMap settings;
    QList<QStringList> asked;
    bool isSilent = false;
};

class PortalAppearanceTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!PrivateBus::isAvailable())
            GTEST_SKIP() << "skipped: dbus-daemon is not installed";
        qDBusRegisterMetaType<Color>();
        qDBusRegisterMetaType<QMap<QString, QVariantMap>>();
        m_bus.emplace();
        ours.emplace(*m_bus, u"panel-ours"_qs);
        theirs.emplace(*m_bus, u"panel-theirs"_qs);
        ASSERT_TRUE(ours->connection().isConnected());
        ASSERT_TRUE(theirs->connection().registerService(u"org.freedesktop.portal.Desktop"_qs));
        ASSERT_TRUE(
            theirs->connection().registerVirtualObject(u"/org/freedesktop/portal/desktop"_qs, &portal));
    }
    void TearDown() override {
        ours.reset();
        theirs.reset();
    }
    void emitChange(const QString& group, const QString& key, const QVariant& value) {
        QDBusMessage signal =
            QDBusMessage::createSignal(u"/org/freedesktop/portal/desktop"_qs,
                                       u"org.freedesktop.portal.Settings"_qs, u"SettingChanged"_qs);
        signal << group << key << QVariant::fromValue(QDBusVariant(value));
        theirs->connection().send(signal);
    }

    std::optional<PrivateBus> m_bus;
    std::optional<PrivateBus::Peer> ours;
    std::optional<PrivateBus::Peer> theirs;
    FakePortal portal;
    AppearanceSource source;
};

QVariant color(double red, double green, double blue) {
    return QVariant::fromValue(Color{red, green, blue});
}

TEST_F(PortalAppearanceTest, TakesOverWhatThePortalSays) {
    portal.settings = {
        {u"color-scheme"_qs, 1U}, {u"accent-color"_qs, color(0.2, 0.4, 1.0)}, {u"contrast"_qs, 1U}};
    PortalAppearance appearance(source);
    appearance.attach(ours->connection());
    EXPECT_EQ(source.current(), DesktopAppearance()) << "asking must not wait for the answer";
    ASSERT_TRUE(spinUntil([this] { return source.current() != DesktopAppearance(); }));
    EXPECT_EQ(source.current().colorScheme, Scheme::dark);
    EXPECT_EQ(source.current().contrast, DesktopAppearance::Contrast::high);
    ASSERT_TRUE(source.current().accent);
    EXPECT_EQ(source.current().accent->name(), u"#3366ff"_qs);
    EXPECT_EQ(portal.asked, QList<QStringList>{{u"org.freedesktop.appearance"_qs}});
}

TEST_F(PortalAppearanceTest, FollowsChanges) {
    portal.settings = {{u"color-scheme"_qs, 1U}};
    PortalAppearance appearance(source);
    appearance.attach(ours->connection());
    ASSERT_TRUE(spinUntil([this] { return source.current().colorScheme == Scheme::dark; }));
    emitChange(u"org.gnome.desktop.interface"_qs, u"color-scheme"_qs, 0U);
    emitChange(u"org.freedesktop.appearance"_qs, u"accent-color"_qs, color(1, 0, 0));
    ASSERT_TRUE(spinUntil([this] { return source.current().accent.has_value(); }));
    EXPECT_EQ(source.current().colorScheme, Scheme::dark);
    emitChange(u"org.freedesktop.appearance"_qs, u"color-scheme"_qs, 2U);
    ASSERT_TRUE(spinUntil([this] { return source.current().colorScheme == Scheme::light; }));
    // Out of range is the portal's way of saying that there is none.
    emitChange(u"org.freedesktop.appearance"_qs, u"accent-color"_qs, color(-1, -1, -1));
    ASSERT_TRUE(spinUntil([this] { return !source.current().accent; }));
}

TEST_F(PortalAppearanceTest, AsksAgainWhenAPortalAppears) {
    const QString name = u"org.freedesktop.portal.Desktop"_qs;
    ASSERT_TRUE(theirs->connection().unregisterService(name));
    PortalAppearance appearance(source);
    appearance.attach(ours->connection());
    // The bus answers in order: by now it has turned the first question down.
    ASSERT_FALSE(ours->connection().interface()->isServiceRegistered(name));
    // Other names are no portals.
    ASSERT_TRUE(theirs->connection().registerService(u"org.example.Other"_qs));
    portal.settings = {{u"color-scheme"_qs, 1U}};
    ASSERT_TRUE(theirs->connection().registerService(name));
    ASSERT_TRUE(spinUntil([this] { return source.current().colorScheme == Scheme::dark; }));
    EXPECT_EQ(portal.asked.size(), 1);
    // One that goes changes nothing, and a next one is asked anew.
    ASSERT_TRUE(theirs->connection().unregisterService(name));
    portal.settings = {{u"color-scheme"_qs, 2U}};
    ASSERT_TRUE(theirs->connection().registerService(name));
    ASSERT_TRUE(spinUntil([this] { return source.current().colorScheme == Scheme::light; }));
    EXPECT_EQ(portal.asked.size(), 2);
}

TEST_F(PortalAppearanceTest, TakesNoNonsense) {
    portal.settings = {{u"color-scheme"_qs, u"dark"_qs},
                       {u"accent-color"_qs, u"red"_qs},
                       {u"contrast"_qs, QStringList{u"high"_qs}},
                       {u"reduced-motion"_qs, 1U}};
    PortalAppearance appearance(source);
    appearance.attach(ours->connection());
    emitChange(u"org.freedesktop.appearance"_qs, u"color-scheme"_qs, 99U);
    ASSERT_TRUE(spinUntil([this] { return portal.asked.size() == 1; }));
    emitChange(u"org.freedesktop.appearance"_qs, u"contrast"_qs, 1U);
    ASSERT_TRUE(spinUntil([this] { return source.current() != DesktopAppearance(); }));
    EXPECT_EQ(source.current().colorScheme, Scheme::unsaid);
    EXPECT_FALSE(source.current().accent);
}

TEST_F(PortalAppearanceTest, MayEndBeforeTheAnswer) {
    portal.isSilent = true;
    auto appearance = std::make_unique<PortalAppearance>(source);
    appearance->attach(ours->connection());
    ASSERT_TRUE(spinUntil([this] { return portal.asked.size() == 1; }));
    appearance.reset();
    theirs.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(source.current(), DesktopAppearance());
}

TEST(AppearanceSourceTest, TellsOnlyChanges) {
    AppearanceSource source;
    int told = 0;
    const auto token = source.observeChanged([&told] { ++told; });
    source.set({});
    EXPECT_EQ(told, 0);
    source.set({Scheme::dark, DesktopAppearance::Contrast::normal, std::nullopt});
    source.set({Scheme::dark, DesktopAppearance::Contrast::normal, std::nullopt});
    EXPECT_EQ(told, 1);
}

} // namespace
} // namespace zofra::test
