// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/RoomCache.h"

#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace zofra {
namespace {

const QString kitchen = QStringLiteral("Kitchen");

SonosSpeaker plain() {
    SonosSpeaker speaker;
    speaker.id = QStringLiteral("A");
    speaker.ip = QStringLiteral("10.0.0.5");
    speaker.roomName = kitchen;
    speaker.model = QStringLiteral("Sonos");
    return speaker;
}

SonosSpeaker full() {
    auto speaker = plain();
    speaker.isCoordinator = false;
    speaker.isSub = true;
    speaker.isVisible = false;
    speaker.groupCoordinatorId = QStringLiteral("B");
    speaker.manufacturer = QStringLiteral("Maker \"é\" <&>");
    speaker.modelName = QString(QStringLiteral(""));
    speaker.descriptionURL = QUrl(QStringLiteral("http://10.0.0.5:1400/xml/device%20description.xml?a=%26"));
    speaker.transportPath = QStringLiteral("/a");
    speaker.renderingPath = QStringLiteral("/b");
    speaker.topologyPath = QStringLiteral("/c");
    return speaker;
}

QJsonObject firstRoom(const QByteArray& json) {
    return QJsonDocument::fromJson(json).array().first().toObject();
}

/// The cache of one plain room with one key of its coordinator changed; an undefined value takes the key
/// away.
QByteArray withCoordinatorKey(const QString& key, const QJsonValue& value) {
    auto room = firstRoom(encodeRooms({{kitchen, plain(), {plain()}}}));
    auto coordinator = room[QStringLiteral("coordinator")].toObject();
    if (value.isUndefined())
        coordinator.remove(key);
    else
        coordinator[key] = value;
    room[QStringLiteral("coordinator")] = coordinator;
    return QJsonDocument(QJsonArray{room}).toJson();
}

TEST(RoomCacheTest, GivesBackWhatWasKept) {
    const QList<SonosRoom> rooms{{kitchen, plain(), {plain(), full()}},
                                 {QStringLiteral("Küche"), full(), {}}};
    EXPECT_EQ(decodeRooms(encodeRooms(rooms)), rooms);
    EXPECT_EQ(decodeRooms(encodeRooms({})), QList<SonosRoom>());
}

TEST(RoomCacheTest, AnAddressSurvivesItsOwnWriting) {
    const auto rooms = decodeRooms(
        withCoordinatorKey(QStringLiteral("descriptionURL"), QStringLiteral("http://10.0.0.5/##")));
    ASSERT_TRUE(rooms);
    EXPECT_EQ(decodeRooms(encodeRooms(*rooms)), rooms);
}

TEST(RoomCacheTest, HoldsALargeHouseholdAndNoInventedOne) {
    auto speaker = full();
    speaker.manufacturer = QString(100, u'm');
    QList<SonosRoom> rooms;
    for (int i = 0; i < 64; ++i) {
        speaker.id = QStringLiteral("RINCON_000E5812345601400_%1").arg(i);
        rooms.append({kitchen, speaker, {speaker}});
    }
    EXPECT_EQ(decodeRooms(encodeRooms(rooms)), rooms);
    speaker.modelName = QString(200'000, u'x');
    rooms.insert(3, {kitchen, speaker, {speaker}});
    auto kept = rooms;
    kept.removeAt(3);
    EXPECT_EQ(decodeRooms(encodeRooms(rooms)), kept) << "one endless room costs no other its place";
    EXPECT_LE(encodeRooms(QList<SonosRoom>(500, {kitchen, plain(), {full()}})).size(), maxCacheBytes);
    EXPECT_EQ(decodeRooms(encodeRooms(QList<SonosRoom>(500, {kitchen, plain(), {}})))->size(),
              maxCachedRooms);
}

TEST(RoomCacheTest, AbsentFieldsAreLeftOut) {
    const auto coordinator =
        firstRoom(encodeRooms({{kitchen, plain(), {}}}))[QStringLiteral("coordinator")].toObject();
    auto keys = coordinator.keys();
    keys.sort();
    EXPECT_EQ(keys, (QStringList{QStringLiteral("id"), QStringLiteral("ip"), QStringLiteral("isCoordinator"),
                                 QStringLiteral("isSub"), QStringLiteral("isVisible"),
                                 QStringLiteral("model"), QStringLiteral("roomName")}));
}

TEST(RoomCacheTest, ARoomHasThreeKeys) {
    const auto room = firstRoom(encodeRooms({{kitchen, full(), {plain()}}}));
    EXPECT_EQ(room.keys(), (QStringList{QStringLiteral("coordinator"), QStringLiteral("name"),
                                        QStringLiteral("speakers")}));
    EXPECT_EQ(room[QStringLiteral("coordinator")].toObject().size(), 14);
    EXPECT_EQ(room[QStringLiteral("coordinator")].toObject()[QStringLiteral("descriptionURL")].toString(),
              QStringLiteral("http://10.0.0.5:1400/xml/device%20description.xml?a=%26"));
}

TEST(RoomCacheTest, EveryRequiredKeyIsRequired) {
    for (const auto* key : {"id", "ip", "roomName", "model", "isCoordinator", "isSub", "isVisible"}) {
        const auto name = QString::fromLatin1(key);
        EXPECT_FALSE(decodeRooms(withCoordinatorKey(name, QJsonValue(QJsonValue::Undefined)))) << key;
        EXPECT_FALSE(decodeRooms(withCoordinatorKey(name, QJsonValue()))) << key;
        EXPECT_FALSE(decodeRooms(withCoordinatorKey(name, 1))) << key;
    }
}

TEST(RoomCacheTest, OptionalKeysMayBeMissingButNotOfAnotherType) {
    for (const auto* key : {"groupCoordinatorId", "manufacturer", "modelName", "descriptionURL",
                            "transportPath", "renderingPath", "topologyPath"}) {
        const auto name = QString::fromLatin1(key);
        EXPECT_TRUE(decodeRooms(withCoordinatorKey(name, QJsonValue(QJsonValue::Undefined)))) << key;
        EXPECT_TRUE(decodeRooms(withCoordinatorKey(name, QJsonValue()))) << key;
        EXPECT_FALSE(decodeRooms(withCoordinatorKey(name, true))) << key;
        EXPECT_FALSE(decodeRooms(withCoordinatorKey(name, QJsonObject()))) << key;
    }
}

TEST(RoomCacheTest, AnAddressMustBeAbsolute) {
    EXPECT_FALSE(decodeRooms(withCoordinatorKey(QStringLiteral("descriptionURL"), QString())));
    EXPECT_FALSE(decodeRooms(withCoordinatorKey(QStringLiteral("descriptionURL"), QStringLiteral("/xml"))));
    EXPECT_FALSE(
        decodeRooms(withCoordinatorKey(QStringLiteral("descriptionURL"), QStringLiteral("http://[x/"))));
}

TEST(RoomCacheTest, ASpeakerWithoutAnyUsableAddressIsRefused) {
    EXPECT_FALSE(decodeRooms(withCoordinatorKey(QStringLiteral("ip"), QStringLiteral("not a host"))));
    EXPECT_FALSE(decodeRooms(withCoordinatorKey(QStringLiteral("ip"), QString())));
}

TEST(RoomCacheTest, AnythingElseIsUnreadable) {
    for (const auto* text : {"", "null", "{}", "[", "[1]", "[null]", "[{}]", "\"x\"", "[{\"name\":\"K\"}]",
                             "[{\"name\":\"K\",\"coordinator\":{},\"speakers\":[]}]"})
        EXPECT_FALSE(decodeRooms(text)) << text;
    auto room = firstRoom(encodeRooms({{kitchen, plain(), {plain()}}}));
    room[QStringLiteral("speakers")] = QJsonArray{1};
    EXPECT_FALSE(decodeRooms(QJsonDocument(QJsonArray{room}).toJson()));
    room[QStringLiteral("speakers")] = QJsonObject();
    EXPECT_FALSE(decodeRooms(QJsonDocument(QJsonArray{room}).toJson()));
    room[QStringLiteral("speakers")] = QJsonArray();
    EXPECT_TRUE(decodeRooms(QJsonDocument(QJsonArray{room}).toJson()));
    room[QStringLiteral("name")] = 5;
    EXPECT_FALSE(decodeRooms(QJsonDocument(QJsonArray{room}).toJson()));
}

TEST(RoomCacheTest, OneBadRoomSpoilsAll) {
    auto array = QJsonDocument::fromJson(encodeRooms({{kitchen, plain(), {}}})).array();
    array.append(QJsonObject());
    EXPECT_FALSE(decodeRooms(QJsonDocument(array).toJson()));
}

} // namespace
} // namespace zofra
