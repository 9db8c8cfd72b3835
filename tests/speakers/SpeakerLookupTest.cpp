// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SpeakerLookup.h"

#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/SpeakerDiscovery.h"
#include "tests/speakers/Background.h"
#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <QMap>

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>

namespace zofra {
namespace {

using test::answered;
using test::Background;
using test::descriptionUrl;
using test::groupXml;
using test::memberXml;

const QString a = QStringLiteral("A");
const QString b = QStringLiteral("B");
const QString kitchen = QStringLiteral("Kitchen");

class SpeakerLookupTest : public testing::Test {
protected:
    SpeakerLookupTest() {
        background.http.automatic = [this](const HttpRequest& request) {
            const auto host = request.url.host().section(u'.', 3).toInt();
            if (request.method == "POST")
                return topologies.contains(host) ? answered(200, topologies.value(host)) : answered(500);
            return descriptions.contains(host) ? answered(200, descriptions.value(host))
                                               : test::failed(HttpError::Code::timedOut);
        };
    }

    QList<SonosSpeaker> look(const QList<int>& hosts) {
        QList<QUrl> addresses;
        for (const int host : hosts)
            addresses.append(descriptionUrl(host));
        return SpeakerLookup(background.state).discoverSpeakers(addresses);
    }

    int requestsTo(int host, const QByteArray& method) const {
        return static_cast<int>(std::count_if(
            background.http.requests.begin(), background.http.requests.end(), [&](const auto& r) {
                return r.method == method && r.url.host() == descriptionUrl(host).host();
            }));
    }

    static QString member(const QString& uuid, int host, const QString& name, const QString& more = {}) {
        return memberXml(uuid, descriptionUrl(host).toString(), name, more);
    }

    Background background;
    QMap<int, QString> descriptions{{1, test::description(a, QStringLiteral("Described A"))},
                                    {2, test::description(b, QStringLiteral("Described B"))}};
    QMap<int, QString> topologies;
};

TEST_F(SpeakerLookupTest, WithoutTopologyTheDescriptionsHold) {
    const auto speakers = look({2, 1});
    ASSERT_EQ(speakers.size(), 2);
    EXPECT_EQ(speakers[0].id, a);
    EXPECT_EQ(speakers[0].roomName, QStringLiteral("Described A"));
    EXPECT_TRUE(speakers[0].isCoordinator && speakers[0].isVisible);
    EXPECT_FALSE(speakers[0].groupCoordinatorId);
    EXPECT_EQ(speakers[1].id, b);
}

TEST_F(SpeakerLookupTest, TopologyGivesNameVisibilityAndGroup) {
    topologies[1] = test::householdAnswer(
        {groupXml(b, member(a, 1, kitchen, QStringLiteral("Invisible='1'")) + member(b, 2, QString()))});
    const auto speakers = look({1, 2});
    ASSERT_EQ(speakers.size(), 2);
    EXPECT_EQ(speakers[0].roomName, kitchen);
    EXPECT_FALSE(speakers[0].isVisible);
    EXPECT_EQ(speakers[0].groupCoordinatorId, b);
    EXPECT_FALSE(speakers[0].isCoordinator);
    EXPECT_EQ(speakers[1].roomName, QStringLiteral("Described B")) << "an empty zone name names nothing";
    EXPECT_EQ(speakers[1].groupCoordinatorId, b);
    EXPECT_TRUE(speakers[1].isCoordinator);
}

TEST_F(SpeakerLookupTest, AGroupWithoutCoordinatorLeavesItsMembersLeading) {
    topologies[1] = test::householdAnswer({groupXml(QString(), member(a, 1, kitchen))});
    const auto speakers = look({1});
    ASSERT_EQ(speakers.size(), 1);
    EXPECT_FALSE(speakers[0].groupCoordinatorId);
    EXPECT_TRUE(speakers[0].isCoordinator);
}

TEST_F(SpeakerLookupTest, WhomNoAnswerNamesStaysAsDescribed) {
    topologies[1] = test::householdAnswer({groupXml(a, member(a, 1, kitchen))});
    const auto speakers = look({1, 2});
    EXPECT_EQ(speakers[0].roomName, kitchen);
    EXPECT_EQ(speakers[1].roomName, QStringLiteral("Described B"));
}

TEST_F(SpeakerLookupTest, EverySpeakerIsAskedOnceAndTheAnswersMerge) {
    topologies[1] = test::householdAnswer(
        {groupXml(a, member(a, 1, QStringLiteral("From A")) +
                         member(b, 2, QStringLiteral("From A"), QStringLiteral("Invisible='1'")))});
    topologies[2] = test::householdAnswer({groupXml(b, member(b, 2, QStringLiteral("From B")))});
    const auto speakers = look({1, 2});
    EXPECT_EQ(requestsTo(1, "POST"), 1);
    EXPECT_EQ(requestsTo(2, "POST"), 1);
    EXPECT_EQ(speakers[0].roomName, QStringLiteral("From A"));
    EXPECT_EQ(speakers[1].roomName, QStringLiteral("From A"));
    EXPECT_FALSE(speakers[1].isVisible) << "an invisible report is kept";
}

TEST_F(SpeakerLookupTest, OfTwoAnswersTheOneOfTheLaterIdWins) {
    topologies[1] = test::householdAnswer({groupXml(a, member(a, 1, QStringLiteral("From A")))});
    topologies[2] = test::householdAnswer({groupXml(a, member(a, 1, QStringLiteral("From B")))});
    EXPECT_EQ(look({1, 2})[0].roomName, QStringLiteral("From B"));
    EXPECT_EQ(look({2, 1})[0].roomName, QStringLiteral("From B"));
}

TEST_F(SpeakerLookupTest, RequestsHaveTheirTimeoutsAndCaps) {
    topologies[1] = test::householdAnswer({});
    look({1});
    ASSERT_EQ(background.http.requests.size(), 2U);
    const auto& description = background.http.requests[0];
    EXPECT_EQ(description.method, "GET");
    EXPECT_EQ(description.timeout, std::chrono::seconds(3));
    EXPECT_EQ(description.maxBodyBytes, 256U * 1024U);
    const auto& topology = background.http.requests[1];
    EXPECT_EQ(test::actionOf(topology), QStringLiteral("GetZoneGroupState"));
    EXPECT_EQ(topology.url.toString(), QStringLiteral("http://10.0.0.1:1400/ZoneGroupTopology/Control"));
    EXPECT_EQ(topology.timeout, std::chrono::seconds(5));
    EXPECT_EQ(topology.maxBodyBytes, 1024U * 1024U);
    EXPECT_EQ(topology.purpose, HttpRequest::Purpose::question);
    for (const auto& request : background.http.requests)
        EXPECT_EQ(request.route, HttpRequest::Route::direct);
}

TEST_F(SpeakerLookupTest, AMemberNotYetReadIsReadNowButNotAsked) {
    topologies[1] =
        test::householdAnswer({groupXml(a, member(a, 1, kitchen) + member(b, 2, QStringLiteral("Hall")))});
    topologies[2] = test::householdAnswer({groupXml(
        b, member(b, 2, QStringLiteral("Never")) + member(QStringLiteral("C"), 3, QStringLiteral("Never")))});
    descriptions[3] = test::description(QStringLiteral("C"), QStringLiteral("Described C"));
    const auto speakers = look({1});
    ASSERT_EQ(speakers.size(), 2);
    EXPECT_EQ(speakers[1].id, b);
    EXPECT_EQ(speakers[1].roomName, QStringLiteral("Hall"));
    EXPECT_EQ(requestsTo(2, "GET"), 1);
    EXPECT_EQ(requestsTo(2, "POST"), 0) << "no further round";
}

TEST_F(SpeakerLookupTest, AMemberThatDoesNotAnswerIsNoSpeaker) {
    topologies[1] = test::householdAnswer(
        {groupXml(a, member(a, 1, kitchen) + member(QStringLiteral("Z"), 77, kitchen))});
    EXPECT_EQ(look({1}).size(), 1);
    EXPECT_EQ(requestsTo(77, "GET"), 1);
}

TEST_F(SpeakerLookupTest, AnAddressThatFailedIsNotAskedAgain) {
    topologies[1] = test::householdAnswer(
        {groupXml(a, member(a, 1, kitchen) + member(QStringLiteral("Z"), 77, kitchen))});
    look({1, 77});
    EXPECT_EQ(requestsTo(77, "GET"), 1);
}

TEST_F(SpeakerLookupTest, AMemberWithoutAnAddressIsLeftAlone) {
    topologies[1] = test::householdAnswer(
        {groupXml(a, QStringLiteral("<ZoneGroupMember><Satellite UUID='S'/></ZoneGroupMember>"))});
    EXPECT_EQ(look({1}).size(), 1);
    EXPECT_EQ(background.http.requests.size(), 2U);
}

TEST_F(SpeakerLookupTest, TwoMembersAtOneAddressAreKeyedById) {
    topologies[1] = test::householdAnswer(
        {groupXml(a, member(a, 1, kitchen)), groupXml(b, member(b, 1, QStringLiteral("Hall")))});
    const auto speakers = look({1});
    ASSERT_EQ(speakers.size(), 1);
    EXPECT_EQ(speakers[0].roomName, kitchen);
    EXPECT_EQ(requestsTo(1, "GET"), 1);
}

TEST_F(SpeakerLookupTest, OnePlayerAtTwoAddressesIsOneSpeakerTheSameOnEachRun) {
    descriptions[2] = test::description(a, QStringLiteral("Again"));
    const auto first = look({1, 2});
    ASSERT_EQ(first.size(), 1);
    EXPECT_EQ(first[0].ip, QStringLiteral("10.0.0.1"));
    EXPECT_EQ(look({2, 1}), first);
    EXPECT_EQ(requestsTo(1, "POST"), 2) << "once per run";
}

TEST_F(SpeakerLookupTest, AddressesAreReadOnce) {
    look({1, 1, 1});
    EXPECT_EQ(requestsTo(1, "GET"), 1);
}

TEST_F(SpeakerLookupTest, SatellitesAreInvisibleSpeakersAndMakeNoRoom) {
    topologies[1] = test::householdAnswer({groupXml(
        a, QStringLiteral("<ZoneGroupMember UUID='A' ZoneName='Theatre' Location='%1'>"
                          "<Satellite UUID='B' ZoneName='Theatre' Location='%2'/></ZoneGroupMember>")
               .arg(descriptionUrl(1).toString(), descriptionUrl(2).toString()))});
    const auto speakers = look({1});
    ASSERT_EQ(speakers.size(), 2);
    EXPECT_FALSE(speakers[1].isVisible);
    const auto rooms = NetworkPlayerProtocol::rooms(speakers);
    ASSERT_EQ(rooms.size(), 1);
    EXPECT_EQ(rooms[0].speakers.size(), 1);
}

TEST_F(SpeakerLookupTest, NoAddressesNoRequests) {
    EXPECT_TRUE(look({}).isEmpty());
    EXPECT_TRUE(background.http.requests.empty());
}

TEST_F(SpeakerLookupTest, AReportOfThousandsOfAddressesIsCutOff) {
    QString members = member(a, 1, kitchen);
    for (int i = 0; i < 3000; ++i)
        members += memberXml(QStringLiteral("X%1").arg(i),
                             QStringLiteral("http://10.9.%1.%2/").arg(i / 100).arg(100 + i % 100), kitchen);
    topologies[1] = test::householdAnswer({groupXml(a, members)});
    EXPECT_EQ(look({1}).size(), 1);
    EXPECT_EQ(background.http.requests.size(), 1025U) << "1024 descriptions and one topology";
}

TEST_F(SpeakerLookupTest, AHostThatInventsPlayersIsAskedForAFewOnly) {
    QList<QUrl> addresses;
    for (int i = 0; i < 500; ++i)
        addresses.append(QUrl(QStringLiteral("http://10.0.0.66:1400/%1.xml").arg(i)));
    addresses.append(descriptionUrl(1));
    const auto speakers = SpeakerLookup(background.state).discoverSpeakers(addresses);
    EXPECT_EQ(requestsTo(66, "GET"), 64);
    ASSERT_EQ(speakers.size(), 1);
    EXPECT_EQ(speakers[0].id, a);
}

TEST(ReadBudgetTest, IsEachHostsOwn) {
    const QUrl greedy(QStringLiteral("http://10.0.0.66/"));
    const QString text(ReadBudget::perHost / 4, u'x');
    ReadBudget budget;
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(budget.take(greedy, text));
    EXPECT_FALSE(budget.take(greedy, QStringLiteral("x")));
    EXPECT_TRUE(budget.take(descriptionUrl(1), text));
}

TEST(ReadBudgetTest, LeavesShortAnswersAloneWhenLongOnesHaveUsedItUp) {
    const QString text(ReadBudget::perHost, u'x');
    ReadBudget budget;
    for (int host = 1; host <= 8; ++host)
        EXPECT_TRUE(budget.take(descriptionUrl(host), text));
    EXPECT_FALSE(budget.take(descriptionUrl(9), text));
    EXPECT_FALSE(budget.take(descriptionUrl(9), QString(ReadBudget::longAnswer + 1, u'x')));
    EXPECT_TRUE(budget.take(descriptionUrl(9), QString(ReadBudget::longAnswer, u'x')));
}

TEST_F(SpeakerLookupTest, EndlessReportsAreNotAllKept) {
    // Each report is nearly as large as one may be, so that eight of them are kept; each names the first
    // player anew.
    QString satellites;
    for (int i = 0; i < 900; ++i)
        satellites +=
            QStringLiteral("<Satellite UUID='%1' ZoneName='x'/>").arg(i, 1000, 10, QLatin1Char('0'));
    QList<int> hosts;
    for (int host = 1; host <= 20; ++host) {
        const auto number = QStringLiteral("%1").arg(host, 2, 10, QLatin1Char('0'));
        descriptions[host] = test::description(u'P' + number, kitchen);
        topologies[host] = test::householdAnswer({groupXml(
            a, QStringLiteral("<ZoneGroupMember>") + satellites + QStringLiteral("</ZoneGroupMember>") +
                   member(QStringLiteral("P01"), 1, QStringLiteral("From ") + number))});
        hosts.append(host);
    }
    const auto speakers = look(hosts);
    EXPECT_EQ(speakers.size(), 20);
    EXPECT_EQ(speakers[0].roomName, QStringLiteral("From 08"));
}

} // namespace
} // namespace zofra
