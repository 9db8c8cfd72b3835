// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/NetworkPlayerProtocol.h"
#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

using test::otherPlayer;
using test::ownPlayer;

const QString kitchen = QStringLiteral("Kitchen");

SonosSpeaker grouped(const QString& id, const QString& roomName, const QString& coordinator) {
    auto speaker = otherPlayer(id, roomName);
    speaker.groupCoordinatorId = coordinator;
    speaker.isCoordinator = coordinator == id;
    return speaker;
}

/// "A<B+C | own": leaders and followers.
QString describe(const QList<PlayerPlaybackGroup>& groups) {
    QStringList texts;
    for (const auto& group : groups) {
        QStringList followers;
        for (const auto& follower : group.followers)
            followers.append(follower.id);
        texts.append(group.leader.id + (followers.isEmpty() ? QString() : u'<' + followers.join(u'+')));
    }
    return texts.join(QStringLiteral(" | "));
}

/// "Kitchen:X=A+X": name, id, speakers.
QString describe(const QList<SonosRoom>& rooms) {
    QStringList texts;
    for (const auto& room : rooms) {
        QStringList ids;
        for (const auto& speaker : room.speakers)
            ids.append(speaker.id);
        texts.append(room.name + u':' + room.id() + u'=' + ids.join(u'+'));
    }
    return texts.join(QStringLiteral(" | "));
}

TEST(PlaybackGroupsTest, OtherPlayersFollowTheFirstAndOwnOnesPlayAlone) {
    EXPECT_EQ(describe(NetworkPlayerProtocol::playbackGroups(
                  {otherPlayer(QStringLiteral("B"), kitchen), ownPlayer(QStringLiteral("own"), kitchen),
                   otherPlayer(QStringLiteral("A"), kitchen), otherPlayer(QStringLiteral("C"), kitchen)})),
              QStringLiteral("A<B+C | own"));
}

TEST(PlaybackGroupsTest, OwnPlayersComeSortedAfterTheOthersWhateverTheirIds) {
    EXPECT_EQ(describe(NetworkPlayerProtocol::playbackGroups({ownPlayer(QStringLiteral("2"), kitchen),
                                                              otherPlayer(QStringLiteral("9"), kitchen),
                                                              ownPlayer(QStringLiteral("1"), kitchen)})),
              QStringLiteral("9 | 1 | 2"));
}

TEST(PlaybackGroupsTest, OfOwnPlayersOnlyHaveNoOtherGroup) {
    EXPECT_EQ(describe(NetworkPlayerProtocol::playbackGroups(
                  {ownPlayer(QStringLiteral("2"), kitchen), ownPlayer(QStringLiteral("1"), kitchen)})),
              QStringLiteral("1 | 2"));
}

TEST(PlaybackGroupsTest, SubsAndInvisiblePlayersAreLeftOut) {
    auto sub = otherPlayer(QStringLiteral("A"), kitchen);
    sub.isSub = true;
    auto hidden = otherPlayer(QStringLiteral("B"), kitchen);
    hidden.isVisible = false;
    auto hiddenOwn = ownPlayer(QStringLiteral("0"), kitchen);
    hiddenOwn.isVisible = false;
    EXPECT_EQ(describe(NetworkPlayerProtocol::playbackGroups(
                  {sub, hidden, hiddenOwn, otherPlayer(QStringLiteral("C"), kitchen)})),
              QStringLiteral("C"));
    EXPECT_TRUE(NetworkPlayerProtocol::playbackGroups({sub, hidden}).isEmpty());
    EXPECT_TRUE(NetworkPlayerProtocol::playbackGroups({}).isEmpty());
}

TEST(RoomsTest, OneGroupWithOneNameIsOneRoom) {
    EXPECT_EQ(
        describe(NetworkPlayerProtocol::rooms({grouped(QStringLiteral("X"), kitchen, QStringLiteral("X")),
                                               grouped(QStringLiteral("A"), kitchen, QStringLiteral("X"))})),
        QStringLiteral("Kitchen:X=A+X"));
}

TEST(RoomsTest, TwoGroupsWithOneNameAreTwoRoomsByCoordinator) {
    EXPECT_EQ(
        describe(NetworkPlayerProtocol::rooms({grouped(QStringLiteral("Y"), kitchen, QStringLiteral("Y")),
                                               grouped(QStringLiteral("X"), kitchen, QStringLiteral("X")),
                                               grouped(QStringLiteral("A"), kitchen, QStringLiteral("X"))})),
        QStringLiteral("Kitchen:X=A+X | Kitchen:Y=Y"));
}

TEST(RoomsTest, OneGroupWithTwoNamesIsTwoRooms) {
    const auto hall = QStringLiteral("Hall");
    EXPECT_EQ(
        describe(NetworkPlayerProtocol::rooms({grouped(QStringLiteral("X"), kitchen, QStringLiteral("X")),
                                               grouped(QStringLiteral("A"), hall, QStringLiteral("X"))})),
        QStringLiteral("Hall:A=A | Kitchen:X=X"));
}

TEST(RoomsTest, PlayersWithoutAGroupAreByThemselves) {
    EXPECT_EQ(describe(NetworkPlayerProtocol::rooms(
                  {otherPlayer(QStringLiteral("B"), kitchen), otherPlayer(QStringLiteral("A"), kitchen)})),
              QStringLiteral("Kitchen:A=A | Kitchen:B=B"));
}

TEST(RoomsTest, OwnPlayersAreEachARoom) {
    auto first = ownPlayer(QStringLiteral("1"), kitchen);
    auto second = ownPlayer(QStringLiteral("2"), kitchen);
    first.groupCoordinatorId = second.groupCoordinatorId = QStringLiteral("1");
    EXPECT_EQ(describe(NetworkPlayerProtocol::rooms({second, first})),
              QStringLiteral("Kitchen:1=1 | Kitchen:2=2"));
}

TEST(RoomsTest, WithoutACoordinatorTheFirstLeads) {
    EXPECT_EQ(
        describe(NetworkPlayerProtocol::rooms({grouped(QStringLiteral("B"), kitchen, QStringLiteral("X")),
                                               grouped(QStringLiteral("A"), kitchen, QStringLiteral("X"))})),
        QStringLiteral("Kitchen:A=A+B"));
}

TEST(RoomsTest, OfSeveralCoordinatorsTheFirstLeads) {
    auto a = grouped(QStringLiteral("A"), kitchen, QStringLiteral("X"));
    auto b = grouped(QStringLiteral("B"), kitchen, QStringLiteral("X"));
    auto c = grouped(QStringLiteral("C"), kitchen, QStringLiteral("X"));
    b.isCoordinator = c.isCoordinator = true;
    EXPECT_EQ(describe(NetworkPlayerProtocol::rooms({c, b, a})), QStringLiteral("Kitchen:B=A+B+C"));
}

TEST(RoomsTest, SubsAndInvisiblePlayersAreLeftOut) {
    auto sub = otherPlayer(QStringLiteral("A"), kitchen);
    sub.isSub = true;
    auto hidden = otherPlayer(QStringLiteral("B"), kitchen);
    hidden.isVisible = false;
    EXPECT_TRUE(NetworkPlayerProtocol::rooms({sub, hidden}).isEmpty());
    EXPECT_TRUE(NetworkPlayerProtocol::rooms({}).isEmpty());
}

TEST(RoomsTest, ComeInTheSameOrderWhateverTheInput) {
    QList<SonosSpeaker> speakers;
    for (const auto* name : {"bad", "Ärzte", "kitchen", "Kitchen", "KITCHEN", "Zoo", "1"})
        speakers.append(otherPlayer(QString::number(speakers.size()), QString::fromUtf8(name)));
    const auto expected = NetworkPlayerProtocol::rooms(speakers);
    EXPECT_EQ(expected.size(), 7);
    for (int turn = 0; turn < 7; ++turn) {
        speakers.append(speakers.takeFirst());
        EXPECT_EQ(NetworkPlayerProtocol::rooms(speakers), expected);
    }
    EXPECT_EQ(expected.first().name, QStringLiteral("1"));
}

} // namespace
} // namespace zofra
