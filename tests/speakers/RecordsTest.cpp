// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/AudioOutputTarget.h"
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlayerLocked.h"
#include "speakers/SonosRoom.h"
#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <QLocale>

#include <algorithm>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace zofra {
namespace {

using test::otherPlayer;

SonosRoom roomOf(const QString& name, const QString& id) {
    const auto speaker = otherPlayer(id, name);
    return {name, speaker, {speaker}};
}

TEST(AudioOutputTargetTest, IsEqualByCaseAndRoom) {
    const auto a = QStringLiteral("A");
    EXPECT_EQ(AudioOutputTarget::localMac(), AudioOutputTarget::localMac());
    EXPECT_NE(AudioOutputTarget::localMac(), AudioOutputTarget::sonosEverywhere());
    EXPECT_EQ(AudioOutputTarget::sonos(a), AudioOutputTarget::sonos(a));
    EXPECT_NE(AudioOutputTarget::sonos(a), AudioOutputTarget::sonos(QStringLiteral("B")));
    EXPECT_NE(AudioOutputTarget::sonos(QString()), AudioOutputTarget::localMac());
}

TEST(AudioOutputTargetTest, HashesByCaseAndRoom) {
    const auto a = QStringLiteral("A");
    EXPECT_EQ(qHash(AudioOutputTarget::sonos(a)), qHash(AudioOutputTarget::sonos(a)));
    EXPECT_NE(qHash(AudioOutputTarget::sonos(a)), qHash(AudioOutputTarget::sonos(QStringLiteral("B"))));
    EXPECT_NE(qHash(AudioOutputTarget::localMac()), qHash(AudioOutputTarget::sonosEverywhere()));
}

TEST(AudioOutputTargetTest, CasesStandInTheirOrder) {
    EXPECT_EQ(static_cast<int>(AudioOutputTarget::localMac().kind()), 0);
    EXPECT_EQ(static_cast<int>(AudioOutputTarget::sonos(QString()).kind()), 1);
    EXPECT_EQ(static_cast<int>(AudioOutputTarget::sonosEverywhere().kind()), 2);
}

TEST(SonosRoomTest, IsIdentifiedByItsCoordinator) {
    EXPECT_EQ(roomOf(QStringLiteral("Kitchen"), QStringLiteral("A")).id(), QStringLiteral("A"));
}

TEST(SonosRoomTest, EveryFieldCounts) {
    const auto room = roomOf(QStringLiteral("Kitchen"), QStringLiteral("A"));
    auto other = room;
    EXPECT_EQ(other, room);
    EXPECT_EQ(qHash(other), qHash(room));
    other.name = QStringLiteral("Hall");
    EXPECT_NE(other, room);
    other = room;
    other.coordinator.isCoordinator = false;
    EXPECT_NE(other, room);
    other = room;
    other.speakers.clear();
    EXPECT_NE(other, room);
    EXPECT_NE(qHash(other), qHash(room));
}

TEST(PlayerTopologyMemberTest, EveryFieldCounts) {
    const PlayerTopologyMember member{QStringLiteral("A"), std::nullopt, QStringLiteral("Kitchen"), true,
                                      QString()};
    auto other = member;
    EXPECT_EQ(other, member);
    EXPECT_EQ(qHash(other), qHash(member));
    other.descriptionURL = test::descriptionUrl(1);
    EXPECT_NE(other, member);
    EXPECT_NE(qHash(other), qHash(member));
    other = member;
    other.isVisible = false;
    EXPECT_NE(other, member);
}

TEST(PlayerPlaybackGroupTest, LeaderAndFollowersCount) {
    const PlayerPlaybackGroup group{otherPlayer(QStringLiteral("A"), QStringLiteral("Hall")), {}};
    auto other = group;
    EXPECT_EQ(other, group);
    EXPECT_EQ(qHash(other), qHash(group));
    other.followers.append(otherPlayer(QStringLiteral("B"), QStringLiteral("Hall")));
    EXPECT_NE(other, group);
}

TEST(RoomOrderTest, NamesThatDifferInCaseOnlyAreTheSame) {
    const RoomOrder comesBefore;
    const auto a = roomOf(QStringLiteral("kitchen"), QStringLiteral("A"));
    const auto b = roomOf(QStringLiteral("Kitchen"), QStringLiteral("B"));
    EXPECT_TRUE(comesBefore(a, b));
    EXPECT_FALSE(comesBefore(b, a));
}

TEST(RoomOrderTest, FollowsTheLanguage) {
    const QLocale german(QLocale::German, QLocale::Germany);
    const RoomOrder comesBefore(german);
    const auto upper = roomOf(QStringLiteral("Ärzte"), QStringLiteral("A"));
    const auto zoo = roomOf(QStringLiteral("Zoo"), QStringLiteral("B"));
    const auto bath = roomOf(QStringLiteral("bad"), QStringLiteral("C"));
    EXPECT_TRUE(comesBefore(upper, bath));
    EXPECT_TRUE(comesBefore(bath, zoo));
}

TEST(RoomOrderTest, IsTotal) {
    QList<SonosRoom> rooms;
    int id = 0;
    for (const auto* name : {"Küche", "Kuche", "KÜCHE", "", " ",
                             "Ku\xCC\x88"
                             "che",
                             "\xE2\x80\x8EKüche", "K", "Ｋ", "küche"})
        rooms.append(roomOf(QString::fromUtf8(name), QString::number(++id)));
    for (const auto& locale : {QLocale::c(), QLocale(QLocale::German), QLocale(QLocale::French)}) {
        const RoomOrder comesBefore(locale);
        for (const auto& a : std::as_const(rooms)) {
            for (const auto& b : std::as_const(rooms))
                EXPECT_EQ(comesBefore(a, b) + comesBefore(b, a), a.id() == b.id() ? 0 : 1)
                    << a.id().toStdString() << ' ' << b.id().toStdString();
        }
    }
}

TEST(PlayerLockedTest, CountsRightFromManyThreads) {
    PlayerLocked<int> counter(0);
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&counter] {
            for (int n = 0; n < 1000; ++n)
                counter.with([](int& value) { ++value; });
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(counter.value(), 8000);
    counter.set(7);
    EXPECT_EQ(counter.value(), 7);
}

} // namespace
} // namespace zofra
