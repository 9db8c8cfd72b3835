// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/NetworkPlayerProtocol.h"
#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zofra {
namespace {

const QString address = QStringLiteral("http://10.0.0.5:1400/xml/device_description.xml");

QList<PlayerTopologyMember> read(const QString& group) {
    return NetworkPlayerProtocol::topology(test::householdAnswer({group}));
}

PlayerTopologyMember member(const QString& uuid, bool isVisible,
                            const QString& zoneName = QStringLiteral("Kitchen")) {
    return {uuid, std::nullopt, zoneName, isVisible, QStringLiteral("C")};
}

const QString a = QStringLiteral("A");
const QString b = QStringLiteral("B");
const QString kitchen = QStringLiteral("Kitchen");

TEST(ZoneGroupTopologyTest, ReportsEachMember) {
    const auto members = read(test::groupXml(b, test::memberXml(a, address, kitchen)));
    ASSERT_EQ(members.size(), 1);
    EXPECT_EQ(members[0], (PlayerTopologyMember{a, QUrl(address), kitchen, true, b}));
}

TEST(ZoneGroupTopologyTest, OfNoAnswerIsEmpty) {
    EXPECT_TRUE(NetworkPlayerProtocol::topology(QString()).isEmpty());
    EXPECT_TRUE(NetworkPlayerProtocol::topology(QStringLiteral("<html>403</html>")).isEmpty());
    EXPECT_TRUE(NetworkPlayerProtocol::topology(QStringLiteral("<r><ZoneGroupState/></r>")).isEmpty());
    EXPECT_TRUE(
        NetworkPlayerProtocol::topology(test::topologyAnswer(QStringLiteral("<ZoneGroup>"))).isEmpty())
        << "the inner text is no XML";
    EXPECT_TRUE(
        NetworkPlayerProtocol::topology(test::topologyAnswer(QStringLiteral("<!DOCTYPE x><x/>"))).isEmpty());
}

TEST(ZoneGroupTopologyTest, TakesTheFirstReportBelowTheRoot) {
    const auto inner = [](const QString& uuid) {
        return QStringLiteral("<ZoneGroupState>") +
               escapedForXml(QStringLiteral("<g>") +
                             test::groupXml(a, test::memberXml(uuid, address, kitchen)) +
                             QStringLiteral("</g>")) +
               QStringLiteral("</ZoneGroupState>");
    };
    const auto members = NetworkPlayerProtocol::topology(
        QStringLiteral("<r><x>") + inner(a) + QStringLiteral("</x>") + inner(b) + QStringLiteral("</r>"));
    ASSERT_EQ(members.size(), 1);
    EXPECT_EQ(members[0].uuid, a);
    EXPECT_TRUE(NetworkPlayerProtocol::topology(inner(a)).isEmpty())
        << "the root itself is not below the root";
}

TEST(ZoneGroupTopologyTest, MarkupThatIsNotEscapedIsNoReport) {
    EXPECT_TRUE(NetworkPlayerProtocol::topology(QStringLiteral("<r><ZoneGroupState>") +
                                                test::groupXml(a, test::memberXml(a, address, kitchen)) +
                                                QStringLiteral("</ZoneGroupState></r>"))
                    .isEmpty());
}

TEST(ZoneGroupTopologyTest, AGroupMayHaveNoCoordinator) {
    const auto members = read(QStringLiteral("<ZoneGroup>") + test::memberXml(a, address, kitchen) +
                              QStringLiteral("</ZoneGroup>"));
    ASSERT_EQ(members.size(), 1);
    EXPECT_EQ(members[0].coordinator, QString());
    EXPECT_EQ(read(test::groupXml(QString(), test::memberXml(a, address, kitchen)))[0].coordinator,
              QString());
}

TEST(ZoneGroupTopologyTest, OnlyInvisibleOneHides) {
    const auto visible = [](const QString& more) {
        return read(test::groupXml(a, test::memberXml(a, address, kitchen, more)))[0].isVisible;
    };
    EXPECT_TRUE(visible(QString()));
    EXPECT_TRUE(visible(QStringLiteral("Invisible='0'")));
    EXPECT_TRUE(visible(QStringLiteral("Invisible='true'")));
    EXPECT_TRUE(visible(QStringLiteral("Invisible=' 1'")));
    EXPECT_FALSE(visible(QStringLiteral("Invisible='1'")));
}

TEST(ZoneGroupTopologyTest, AMemberNeedsIdNameAndAddress) {
    const auto count = [](const QString& attributes) {
        return read(
                   test::groupXml(a, QStringLiteral("<ZoneGroupMember ") + attributes + QStringLiteral("/>")))
            .size();
    };
    const QString where = QStringLiteral(" Location='") + address + u'\'';
    EXPECT_EQ(count(QStringLiteral("UUID='A' ZoneName='K'") + where), 1);
    EXPECT_EQ(count(QStringLiteral("UUID='A' ZoneName=''") + where), 1) << "an empty name is a name";
    EXPECT_EQ(count(QStringLiteral("UUID='' ZoneName='K'") + where), 0);
    EXPECT_EQ(count(QStringLiteral("ZoneName='K'") + where), 0);
    EXPECT_EQ(count(QStringLiteral("UUID='A'") + where), 0);
    EXPECT_EQ(count(QStringLiteral("UUID='A' ZoneName='K'")), 0);
    for (const auto* location : {"", "ftp://h/", "HTTP://h/", "http:///x", "/relative", "http://h:99999/"})
        EXPECT_EQ(
            count(QStringLiteral("UUID='A' ZoneName='K' Location='%1'").arg(QString::fromLatin1(location))),
            0)
            << location;
}

TEST(ZoneGroupTopologyTest, SatellitesComeBeforeTheirMemberAndAreInvisible) {
    const auto members = read(
        test::groupXml(a, QStringLiteral("<ZoneGroupMember UUID='A' ZoneName='Theatre' Location='%1'>"
                                         "<Satellite UUID='S1' ZoneName='Rear' Location='%1' Invisible='0'/>"
                                         "<x><Satellite UUID='S2'/></x>"
                                         "<Satellite UUID=''/><Satellite ZoneName='x'/></ZoneGroupMember>")
                              .arg(address)));
    ASSERT_EQ(members.size(), 3);
    EXPECT_EQ(members[0],
              (PlayerTopologyMember{QStringLiteral("S1"), QUrl(address), QStringLiteral("Rear"), false, a}));
    EXPECT_EQ(members[1], (PlayerTopologyMember{QStringLiteral("S2"), std::nullopt, QStringLiteral("Theatre"),
                                                false, a}));
    EXPECT_EQ(members[2], (PlayerTopologyMember{a, QUrl(address), QStringLiteral("Theatre"), true, a}));
}

TEST(ZoneGroupTopologyTest, ADroppedMemberKeepsItsSatellites) {
    const auto members = read(
        test::groupXml(a, QStringLiteral("<ZoneGroupMember UUID='A'><Satellite UUID='S' Location='ftp://h/'/>"
                                         "</ZoneGroupMember>")));
    ASSERT_EQ(members.size(), 1);
    EXPECT_EQ(members[0], (PlayerTopologyMember{QStringLiteral("S"), std::nullopt, QString(), false, a}));
}

TEST(ZoneGroupTopologyTest, NestingThatMultipliesMembersIsRefused) {
    const auto one = QStringLiteral("<ZoneGroupMember><Satellite UUID='S'/></ZoneGroupMember>");
    const auto inside = [&one](int groups, int members) {
        return QStringLiteral("<ZoneGroup>").repeated(groups) + one.repeated(members) +
               QStringLiteral("</ZoneGroup>").repeated(groups);
    };
    EXPECT_EQ(read(inside(2, 10)).size(), 20) << "nested groups are read as they are written";
    EXPECT_EQ(read(inside(4, 1024)).size(), 4096);
    EXPECT_TRUE(read(inside(40, 1024)).isEmpty());
}

TEST(ZoneGroupTopologyTest, NestingThatMultipliesTheWorkIsRefused) {
    // Few members, but each search goes through all that is below.
    const auto nested = [](int depth, int elements) {
        const auto group = test::groupXml(QStringLiteral("A"), QStringLiteral("%1"));
        QString inner = QStringLiteral("<e/>").repeated(elements);
        for (int i = 0; i < depth; ++i)
            inner = QStringLiteral("<ZoneGroupMember UUID='A' ZoneName='x' Location='http://10.0.0.1/'>") +
                    inner + QStringLiteral("</ZoneGroupMember>");
        for (int i = 0; i < depth; ++i)
            inner = group.arg(inner);
        return test::householdAnswer({inner});
    };
    EXPECT_EQ(NetworkPlayerProtocol::topology(nested(3, 100)).size(), 9);
    EXPECT_TRUE(NetworkPlayerProtocol::topology(nested(20, 10'000)).isEmpty());
}

TEST(ZoneGroupTopologyTest, AttributesTooLongToBeKeptCountAsMissing) {
    const QString tooLong(1025, u'x');
    EXPECT_TRUE(read(test::groupXml(a, test::memberXml(tooLong, address, kitchen))).isEmpty());
    EXPECT_TRUE(read(test::groupXml(a, test::memberXml(a, address, tooLong))).isEmpty());
    EXPECT_TRUE(read(test::groupXml(a, test::memberXml(a, address + tooLong, kitchen))).isEmpty());
    const auto members = read(test::groupXml(tooLong, test::memberXml(a, address, kitchen)));
    ASSERT_EQ(members.size(), 1);
    EXPECT_EQ(members[0].coordinator, QString());
}

TEST(TopologyMergeTest, LaterRecordsWin) {
    const auto merged = NetworkPlayerProtocol::merge(
        {{member(a, true, QStringLiteral("Old"))}, {member(a, true, QStringLiteral("New"))}});
    EXPECT_EQ(merged, (QList<PlayerTopologyMember>{member(a, true, QStringLiteral("New"))}));
}

TEST(TopologyMergeTest, WhoIsInvisibleOnceStaysSo) {
    const QList<PlayerTopologyMember> expected{member(a, false)};
    EXPECT_EQ(NetworkPlayerProtocol::merge({{member(a, false)}, {member(a, true)}}), expected);
    EXPECT_EQ(NetworkPlayerProtocol::merge({{member(a, true)}, {member(a, false)}}), expected);
    EXPECT_EQ(NetworkPlayerProtocol::merge({{member(a, true), member(a, false), member(a, true)}}), expected);
}

TEST(TopologyMergeTest, ALaterInvisibleRecordReplacesAnInvisibleOne) {
    const auto merged = NetworkPlayerProtocol::merge(
        {{member(a, false, QStringLiteral("Old"))}, {member(a, false, QStringLiteral("New"))}});
    EXPECT_EQ(merged, (QList<PlayerTopologyMember>{member(a, false, QStringLiteral("New"))}));
}

TEST(TopologyMergeTest, IsInPlainOrderOfIds) {
    const auto lower = QStringLiteral("a");
    const auto merged =
        NetworkPlayerProtocol::merge({{member(lower, true), member(b, true)}, {member(a, true)}});
    EXPECT_EQ(merged, (QList<PlayerTopologyMember>{member(a, true), member(b, true), member(lower, true)}));
    EXPECT_TRUE(NetworkPlayerProtocol::merge({}).isEmpty());
    EXPECT_TRUE(NetworkPlayerProtocol::merge({{}, {}}).isEmpty());
}

/// A captured report as the answer of a player.
std::optional<QList<PlayerTopologyMember>> captured(const QString& name) {
    const auto text = test::capture(QStringLiteral("zone_group_state/") + name);
    if (!text)
        return std::nullopt;
    if (name.endsWith(QLatin1String(".inner.xml")))
        return NetworkPlayerProtocol::topology(test::topologyAnswer(*text));
    if (name.endsWith(QLatin1String(".event.xml")))
        return NetworkPlayerProtocol::topology(*text);
    return NetworkPlayerProtocol::topology(QStringLiteral("<r>") + *text + QStringLiteral("</r>"));
}

/// "Kitchen+Living Room, Stue": visible zone names, groups by their coordinator in order of appearance.
QString groupsOf(const QList<PlayerTopologyMember>& members) {
    QStringList order;
    QHash<QString, QStringList> groups;
    for (const auto& m : members) {
        if (!m.isVisible)
            continue;
        const auto key = m.coordinator.isEmpty() ? QStringLiteral("of ") + m.uuid : m.coordinator;
        if (!groups.contains(key))
            order.append(key);
        groups[key].append(m.zoneName);
    }
    QStringList texts;
    for (const auto& key : std::as_const(order)) {
        groups[key].sort();
        texts.append(groups[key].join(u'+'));
    }
    return texts.join(QStringLiteral(", "));
}

struct CapturedTopology {
    const char* file;
    int units;
    const char* groups;
};

class TopologyCaptureTest : public testing::TestWithParam<CapturedTopology> {};

TEST_P(TopologyCaptureTest, GivesTheRoomsThatItsOwnerKnows) {
    const auto members = captured(QString::fromLatin1(GetParam().file));
    if (!members)
        GTEST_SKIP() << "skipped: no captures";
    EXPECT_EQ(members->size(), GetParam().units);
    EXPECT_EQ(groupsOf(*members), QString::fromUtf8(GetParam().groups));
}

INSTANTIATE_TEST_SUITE_P(
    All, TopologyCaptureTest,
    testing::Values(CapturedTopology{"three_rooms_grouped.xml", 3, "Eetkamer+Keuken+TV"},
                    CapturedTopology{"two_rooms_grouped.xml", 2, "Kitchen+Living Room"},
                    CapturedTopology{"stereo_pair_invisible_first.xml", 2, "Office"},
                    CapturedTopology{"home_theatre_satellites.xml", 5, "Downstairs, Upstairs"},
                    CapturedTopology{"four_rooms_three_groups.inner.xml", 4,
                                     "Kitchen+Living Room, Stue, Kontor"},
                    CapturedTopology{"two_single_same_location.inner.xml", 2, "Living Room, Bedroom"},
                    CapturedTopology{"empty_household.inner.xml", 0, ""},
                    CapturedTopology{"orphan_group.inner.xml", 1, "Kitchen"},
                    CapturedTopology{"malformed_inner.event.xml", 0, ""}));

TEST(TopologyCapturesTest, TheOldRootHasFiveVisibleRoomsOfSevenUnits) {
    const auto members = captured(QStringLiteral("old_root_boost_and_sub.event.xml"));
    if (!members)
        GTEST_SKIP() << "skipped: no captures";
    EXPECT_EQ(members->size(), 7);
    EXPECT_EQ(std::count_if(members->begin(), members->end(), [](const auto& m) { return m.isVisible; }), 5);
    EXPECT_FALSE(members->first().isVisible);
    EXPECT_EQ(members->first().zoneName, QStringLiteral("BOOST"));
}

TEST(TopologyCapturesTest, TheGroupOfThreeIsLedFromTheKitchen) {
    const auto members = captured(QStringLiteral("three_rooms_grouped.xml"));
    if (!members)
        GTEST_SKIP() << "skipped: no captures";
    const auto leader =
        std::find_if(members->begin(), members->end(), [](const auto& m) { return m.uuid == m.coordinator; });
    ASSERT_NE(leader, members->end());
    EXPECT_EQ(leader->descriptionURL->host(), QStringLiteral("192.168.1.20"));
}

TEST(TopologyCapturesTest, TheOrphanHasNoCoordinator) {
    const auto members = captured(QStringLiteral("orphan_group.inner.xml"));
    if (!members)
        GTEST_SKIP() << "skipped: no captures";
    ASSERT_EQ(members->size(), 1);
    EXPECT_EQ(members->first().coordinator, QString());
}

} // namespace
} // namespace zofra
