// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/StatusNotifierObject.h"

#include "platform/linux/DBusSignal.h"
#include "tests/platform/tray/TrayBusTest.h"

#include <QDBusObjectPath>

namespace zofra::test {
namespace {

using Mode = StatusItemMode;

class StatusNotifierObjectTest : public TrayBusTest {
protected:
    void SetUp() override {
        TrayBusTest::SetUp();
        if (IsSkipped())
            return;
        server = std::make_unique<PrivateBus::Peer>(*bus, QStringLiteral("server%1").arg(++s_peers));
        StatusNotifierObject::Handlers handlers;
        handlers.activate = [this](QPoint at) { calls << u"activate %1,%2"_qs.arg(at.x()).arg(at.y()); };
        handlers.contextMenu = [this](QPoint at) { calls << u"context %1,%2"_qs.arg(at.x()).arg(at.y()); };
        handlers.secondaryActivate = [this] { calls << u"secondary"_qs; };
        handlers.scroll = [this](int delta) { calls << u"scroll %1"_qs.arg(delta); };
        handlers.activationToken = [this](const QString& token) { calls << u"token "_qs + token; };
        handlers.pixmaps = [](const QString& symbol) {
            return symbol.isEmpty() ? QList<BusPixmap>()
                                    : QList<BusPixmap>{BusPixmap{1, 1, QByteArray(4, 'x')}};
        };
        object = std::make_unique<StatusNotifierObject>(
            server->connection(),
            StatusNotifierObject::Paths{u"/StatusNotifierItem"_qs, u"/MenuBar"_qs, u"/icons"_qs}, handlers);
        object->setContent(content());
        for (const char* name : {"NewTitle", "NewIcon", "NewToolTip", "NewStatus", "XAyatanaNewLabel"}) {
            recorders.push_back(std::make_unique<DBusSignal>(
                client->connection(),
                DBusSignal::Source{server->connection().baseService(),
                                   u"/StatusNotifierItem"_qs,
                                   itemInterface,
                                   QString::fromLatin1(name),
                                   {}},
                [this](const QDBusMessage& message) { signals_ << message.member(); }));
        }
        settle();
        signals_.clear();
    }
    void TearDown() override {
        recorders.clear();
        object.reset();
        server.reset();
        TrayBusTest::TearDown();
    }

    static StatusNotifierContent content() {
        StatusNotifierContent content;
        content.title = u"Zofra: A & <b>"_qs;
        content.label = u"Zofra: A"_qs;
        content.iconName = u"media-playback-start"_qs;
        content.symbolName = u"play.fill"_qs;
        content.iconAccessibleDescription = u"Paused"_qs;
        content.toolTip = u"Station: Zofra\nNow Playing: A & <b>"_qs;
        return content;
    }
    QDBusMessage itemCall(const QString& member, const QVariantList& arguments) {
        return call(server->connection().baseService(), u"/StatusNotifierItem"_qs, itemInterface, member,
                    arguments);
    }
    QVariantMap properties() {
        const auto reply = call(server->connection().baseService(), u"/StatusNotifierItem"_qs,
                                u"org.freedesktop.DBus.Properties"_qs, u"GetAll"_qs, {itemInterface});
        return qdbus_cast<QVariantMap>(reply.arguments().value(0));
    }
    QString introspection() {
        return call(server->connection().baseService(), u"/StatusNotifierItem"_qs,
                    u"org.freedesktop.DBus.Introspectable"_qs, u"Introspect"_qs)
            .arguments()
            .value(0)
            .toString();
    }

    const QString itemInterface = u"org.kde.StatusNotifierItem"_qs;
    const QString unknownMethod = u"org.freedesktop.DBus.Error.UnknownMethod"_qs;
    std::unique_ptr<PrivateBus::Peer> server;
    std::unique_ptr<StatusNotifierObject> object;
    std::vector<std::unique_ptr<DBusSignal>> recorders;
    QStringList calls;
    QStringList signals_;
};

TEST_F(StatusNotifierObjectTest, HostmenuHasAMenuAndNoActivate) {
    object->setMode(Mode::hostmenu, StatusNotifierObject::ToolTipText::plain);
    const auto map = properties();
    EXPECT_EQ(map.value(u"ItemIsMenu"_qs).toBool(), true);
    EXPECT_EQ(qvariant_cast<QDBusObjectPath>(map.value(u"Menu"_qs)).path(), u"/MenuBar"_qs);
    EXPECT_EQ(itemCall(u"Activate"_qs, {1, 2}).errorName(), unknownMethod);
    const QString xml = introspection();
    EXPECT_FALSE(xml.contains(u"\"Activate\""_qs));
    EXPECT_TRUE(xml.contains(u"\"Menu\""_qs));
    EXPECT_EQ(calls, QStringList());
}

TEST_F(StatusNotifierObjectTest, DirectHasActivateAndNoWordOfAMenu) {
    object->setMode(Mode::direct, StatusNotifierObject::ToolTipText::plain);
    const auto map = properties();
    EXPECT_FALSE(map.contains(u"Menu"_qs));
    EXPECT_FALSE(map.contains(u"ItemIsMenu"_qs));
    EXPECT_EQ(itemCall(u"Activate"_qs, {3, 4}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(itemCall(u"ContextMenu"_qs, {5, 6}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(calls, (QStringList{u"activate 3,4"_qs, u"context 5,6"_qs}));
    const QString xml = introspection();
    EXPECT_TRUE(xml.contains(u"\"Activate\""_qs));
    EXPECT_FALSE(xml.contains(u"\"Menu\""_qs));
    EXPECT_FALSE(xml.contains(u"ItemIsMenu"_qs));
}

TEST_F(StatusNotifierObjectTest, TheOtherWaysOfClickingArePassedOn) {
    itemCall(u"SecondaryActivate"_qs, {1, 1});
    itemCall(u"XAyatanaSecondaryActivate"_qs, {QVariant::fromValue(7U)});
    itemCall(u"Scroll"_qs, {120, u"vertical"_qs});
    itemCall(u"Scroll"_qs, {-1, u"Vertical"_qs});
    itemCall(u"Scroll"_qs, {120, u"Horizontal"_qs});
    itemCall(u"ProvideXdgActivationToken"_qs, {u"abc"_qs});
    EXPECT_EQ(calls, (QStringList{u"secondary"_qs, u"secondary"_qs, u"scroll 120"_qs, u"scroll -1"_qs,
                                  u"token abc"_qs}));
}

TEST_F(StatusNotifierObjectTest, WhatItDoesNotKnowIsAnUnknownMethod) {
    EXPECT_EQ(itemCall(u"Nonsense"_qs, {}).errorName(), unknownMethod);
    EXPECT_EQ(itemCall(u"Scroll"_qs, {u"wrong"_qs}).errorName(),
              u"org.freedesktop.DBus.Error.InvalidArgs"_qs);
    EXPECT_EQ(call(server->connection().baseService(), u"/StatusNotifierItem"_qs,
                   u"org.freedesktop.StatusNotifierItem"_qs, u"Activate"_qs, {1, 1})
                  .errorName(),
              unknownMethod)
        << "an unknown interface is an unknown method, too";
}

TEST_F(StatusNotifierObjectTest, PropertiesAreComplete) {
    const auto map = properties();
    EXPECT_EQ(map.value(u"Category"_qs).toString(), u"ApplicationStatus"_qs);
    EXPECT_EQ(map.value(u"Id"_qs).toString(), u"zofrazofra"_qs);
    EXPECT_EQ(map.value(u"Status"_qs).toString(), u"Active"_qs);
    EXPECT_EQ(map.value(u"Title"_qs).toString(), u"Zofra: A & <b>"_qs);
    EXPECT_EQ(map.value(u"XAyatanaLabel"_qs).toString(), u"Zofra: A"_qs);
    EXPECT_EQ(map.value(u"XAyatanaLabelGuide"_qs).toString(), u"Zofra: A"_qs);
    EXPECT_EQ(map.value(u"IconName"_qs).toString(), u"media-playback-start"_qs);
    EXPECT_EQ(map.value(u"IconThemePath"_qs).toString(), u"/icons"_qs);
    EXPECT_EQ(map.value(u"IconAccessibleDesc"_qs).toString(), u"Paused"_qs);
    EXPECT_EQ(map.value(u"XAyatanaIconAccessibleDesc"_qs).toString(), u"Paused"_qs);
    const auto pixmaps = qdbus_cast<QList<BusPixmap>>(map.value(u"IconPixmap"_qs));
    ASSERT_EQ(pixmaps.size(), 1);
    EXPECT_EQ(pixmaps.at(0).bytes, QByteArray(4, 'x'));
}

TEST_F(StatusNotifierObjectTest, EveryPropertyOfTheIntrospectionIsThere) {
    for (const Mode mode : {Mode::direct, Mode::hostmenu}) {
        object->setMode(mode, StatusNotifierObject::ToolTipText::plain);
        const auto map = properties();
        const QString xml = introspection();
        qsizetype count = 0;
        for (auto property = map.cbegin(); property != map.cend(); ++property, ++count)
            EXPECT_TRUE(xml.contains(u"<property name=\"%1\""_qs.arg(property.key())))
                << property.key().toStdString();
        EXPECT_EQ(xml.count(u"<property name="_qs), count);
    }
}

TEST_F(StatusNotifierObjectTest, TheToolTipIsPlainTextInItsTitle) {
    auto tip = qdbus_cast<BusToolTip>(properties().value(u"ToolTip"_qs));
    EXPECT_EQ(tip.title, u"Station: Zofra\nNow Playing: A & <b>"_qs);
    EXPECT_EQ(tip.text, QString());
    object->setMode(Mode::hostmenu, StatusNotifierObject::ToolTipText::markup);
    tip = qdbus_cast<BusToolTip>(properties().value(u"ToolTip"_qs));
    EXPECT_EQ(tip.title, u"Station: Zofra\nNow Playing: A &amp; &lt;b&gt;"_qs);
}

TEST_F(StatusNotifierObjectTest, SinglePropertiesCanBeReadAndNoneSet) {
    const QString service = server->connection().baseService();
    const auto get = [&](const QString& interface, const QString& name) {
        return call(service, u"/StatusNotifierItem"_qs, u"org.freedesktop.DBus.Properties"_qs, u"Get"_qs,
                    {interface, name});
    };
    EXPECT_EQ(
        qvariant_cast<QDBusVariant>(get(itemInterface, u"Id"_qs).arguments().value(0)).variant().toString(),
        u"zofrazofra"_qs);
    EXPECT_EQ(get(itemInterface, u"Nonsense"_qs).errorName(),
              u"org.freedesktop.DBus.Error.UnknownProperty"_qs);
    EXPECT_EQ(get(u"org.example.Other"_qs, u"Id"_qs).errorName(),
              u"org.freedesktop.DBus.Error.UnknownInterface"_qs);
    EXPECT_EQ(call(service, u"/StatusNotifierItem"_qs, u"org.freedesktop.DBus.Properties"_qs, u"Set"_qs,
                   {itemInterface, u"Title"_qs, QVariant::fromValue(QDBusVariant(u"x"_qs))})
                  .errorName(),
              u"org.freedesktop.DBus.Error.PropertyReadOnly"_qs);
}

TEST_F(StatusNotifierObjectTest, OnlyWhatChangesIsTold) {
    auto next = content();
    object->setContent(next);
    settle();
    EXPECT_EQ(signals_, QStringList());
    next.title = u"Zofra: B"_qs;
    object->setContent(next);
    next.label = u"Zofra: B"_qs;
    object->setContent(next);
    next.toolTip = u"Other"_qs;
    object->setContent(next);
    next.iconName = u"audio-volume-high"_qs;
    next.symbolName = u"speaker.wave.2.fill"_qs;
    object->setContent(next);
    ASSERT_TRUE(spinUntil([&] { return signals_.size() >= 4; }));
    settle();
    EXPECT_EQ(signals_,
              (QStringList{u"NewTitle"_qs, u"XAyatanaNewLabel"_qs, u"NewToolTip"_qs, u"NewIcon"_qs}));
}

TEST_F(StatusNotifierObjectTest, APictureIsSentAlphaFirst) {
    QImage image(1, 2, QImage::Format_ARGB32);
    image.setPixelColor(0, 0, QColor(0x11, 0x22, 0x33, 0x44));
    image.setPixelColor(0, 1, QColor(0, 0, 0, 0));
    const auto pixmap = BusPixmap::fromImage(image);
    EXPECT_EQ(pixmap.width, 1);
    EXPECT_EQ(pixmap.height, 2);
    EXPECT_EQ(pixmap.bytes.toHex(), QByteArray("4411223300000000"));
}

} // namespace
} // namespace zofra::test
