// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SpeakerFindings.h"

#include "speakers/NetworkPlayerProtocol.h"
#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <QJsonArray>

#include <cerrno>
#include <gtest/gtest.h>

namespace zofra::doctor {
namespace {

SonosSpeaker player(int host) {
    auto speaker = test::otherPlayer(u"P%1"_qs.arg(host), u"Room %1"_qs.arg(host), host);
    speaker.descriptionURL = test::descriptionUrl(host);
    return speaker;
}

class SpeakerFindingsTest : public testing::Test {
protected:
    SpeakerFindingsTest() {
        facts.state = SpeakerFacts::State::done;
        facts.searches.push_back({{u"eth0"_qs, u"10.0.0.2"_qs, u"10.0.0.255"_qs},
                                  {{u"239.255.255.250"_qs, 0}, {u"10.0.0.255"_qs, 0}},
                                  {}});
    }
    void send(int multicast, int broadcast) {
        facts.searches.front().sends = {{u"239.255.255.250"_qs, multicast}, {u"10.0.0.255"_qs, broadcast}};
    }
    [[nodiscard]] Finding network() const { return judgeSpeakers(facts).front(); }
    [[nodiscard]] Finding players() const { return judgeSpeakers(facts).back(); }

    SpeakerFacts facts;
};

TEST_F(SpeakerFindingsTest, WithoutAnyAreFine) {
    EXPECT_EQ(network().text, u"eth0 10.0.0.2: searched, 0 answers"_qs);
    EXPECT_EQ(network().verdict, Verdict::ok);
    EXPECT_EQ(players().verdict, Verdict::ok);
    EXPECT_TRUE(players().text.startsWith(u"none found"_qs));
}

TEST_F(SpeakerFindingsTest, AreListedByRoomAndWay) {
    facts.searches.front().answers = {test::descriptionUrl(5)};
    facts.scanned = {test::descriptionUrl(6)};
    facts.rooms = NetworkPlayerProtocol::rooms({player(5), player(6), player(7)});
    EXPECT_EQ(network().text, u"eth0 10.0.0.2: searched, 1 answer"_qs);
    EXPECT_EQ(players().text,
              u"3 rooms: Room 5, Room 6, Room 7 (players: 1 by the search, 1 by asking every address, "
              "1 through other players)"_qs);
    const auto rooms = players().details.value(u"rooms"_qs).toArray();
    ASSERT_EQ(rooms.size(), 3);
    EXPECT_EQ(
        rooms.at(1).toObject().value(u"players"_qs).toArray().first().toObject().value(u"way"_qs).toString(),
        u"scan"_qs);
}

TEST_F(SpeakerFindingsTest, ThatAnswerOnlyWhenAskedOneByOneMeanThatMulticastIsBlocked) {
    facts.scanned = {test::descriptionUrl(6)};
    facts.rooms = NetworkPlayerProtocol::rooms({player(6)});
    EXPECT_EQ(network().verdict, Verdict::problem);
    EXPECT_TRUE(network().text.contains(u"multicast is blocked"_qs));
    facts.searches.front().interface.ip = u"192.168.7.2"_qs;
    EXPECT_EQ(network().verdict, Verdict::ok) << "they are on another network";
}

TEST_F(SpeakerFindingsTest, KnowWhichPartOfTheSearchIsRefused) {
    send(EPERM, 0);
    EXPECT_TRUE(
        network().text.contains(u"multicast is blocked (Operation not permitted), broadcast is not"_qs));
    send(EPERM, EACCES);
    EXPECT_TRUE(network().text.contains(u"refuses the search (Permission denied)"_qs));
    EXPECT_TRUE(network().cure.contains(u"1900"_qs) && network().cure.contains(u"1400"_qs));
    send(0, EACCES);
    EXPECT_EQ(network().verdict, Verdict::ok) << "the multicast one is enough";
}

TEST_F(SpeakerFindingsTest, AreDeniedWhenNoneMayBeAsked) {
    facts.refusedRequests = 3;
    facts.lastRefusal = EACCES;
    EXPECT_EQ(players().verdict, Verdict::problem);
    EXPECT_TRUE(players().text.contains(u"denied"_qs));
    facts.rooms = NetworkPlayerProtocol::rooms({player(5)});
    EXPECT_EQ(players().verdict, Verdict::ok) << "one request that fails is not the whole network";
}

TEST_F(SpeakerFindingsTest, NeedANetwork) {
    facts.searches.clear();
    EXPECT_EQ(network().verdict, Verdict::problem);
    facts.state = SpeakerFacts::State::searching;
    EXPECT_EQ(judgeSpeakers(facts).size(), 1U) << "not known yet";
}

TEST_F(SpeakerFindingsTest, ThatAreFoundSoFarAreTold) {
    facts.state = SpeakerFacts::State::searching;
    EXPECT_EQ(players().verdict, Verdict::ok);
    EXPECT_TRUE(players().text.contains(u"so far"_qs));
    facts.scanned = {test::descriptionUrl(6)};
    EXPECT_TRUE(players().text.startsWith(u"1 player"_qs));
}

TEST_F(SpeakerFindingsTest, AreNotLookedForUnlessWanted) {
    facts.state = SpeakerFacts::State::notWanted;
    const auto findings = judgeSpeakers(facts);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings.front().verdict, Verdict::skipped);
}

} // namespace
} // namespace zofra::doctor
