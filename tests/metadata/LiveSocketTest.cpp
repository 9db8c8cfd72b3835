// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/LiveSocket.h"

#include "tests/metadata/Frames.h"
#include "tests/support/PrintQt.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

namespace zofra {
namespace {

using test::arrayFrame;
using test::element;
using test::playEvent;

QString titleIn(const QString& frame, RadioStation station) {
    const auto track = liveTrackInFrame(frame, station);
    return track ? track->title.value_or(u"(untitled)"_qs) : u"(no track)"_qs;
}
const QString noTrack = u"(no track)"_qs;

TEST(FrameKindTest, IsToldByTheFirstCharacters) {
    EXPECT_EQ(sockJSFrameKind(u"o"_qs), SockJSFrameKind::open);
    EXPECT_EQ(sockJSFrameKind(u"h"_qs), SockJSFrameKind::heartbeat);
    EXPECT_EQ(sockJSFrameKind(u"c"_qs), SockJSFrameKind::close);
    EXPECT_EQ(sockJSFrameKind(u"c[3000,\"Go away!\"]"_qs), SockJSFrameKind::close);
    EXPECT_EQ(sockJSFrameKind(u"a[]"_qs), SockJSFrameKind::array);
    for (const auto& other : {u""_qs, u"oo"_qs, u"o\n"_qs, u"O"_qs, u"h "_qs, u"a"_qs, u"a []"_qs, u"A[]"_qs,
                              u"[]"_qs, u"m\"x\""_qs, u" o"_qs})
        EXPECT_EQ(sockJSFrameKind(other), SockJSFrameKind::unknown) << other.toStdString();
}

TEST(LiveTrackInFrameTest, IsTheTrackOfTheCurrentStation) {
    const auto frame = arrayFrame({element(playEvent(u"qmusic_be"_qs, u"Song"_qs, u"Band"_qs))});
    const auto track = liveTrackInFrame(frame, RadioStation::qmusic);
    ASSERT_TRUE(track);
    EXPECT_EQ(track->formattedCurrent(), u"Band – Song"_qs);
}

TEST(LiveTrackInFrameTest, SkipsEventsOfOtherStations) {
    const auto frame = arrayFrame({element(playEvent(u"qmusic_be"_qs, u"Song"_qs))});
    EXPECT_EQ(titleIn(frame, RadioStation::joe), noTrack);
    EXPECT_EQ(titleIn(arrayFrame({element(playEvent(u"QMUSIC_BE"_qs, u"Song"_qs))}), RadioStation::qmusic),
              noTrack);
    EXPECT_EQ(titleIn(arrayFrame({element(playEvent(u""_qs, u"Song"_qs))}), RadioStation::qmusic), noTrack);
    EXPECT_EQ(
        titleIn(arrayFrame({element(playEvent(u"zofra_be_class_x"_qs, u"Song"_qs))}), RadioStation::zofra),
        noTrack);
}

TEST(LiveTrackInFrameTest, TakesEventsThatNameNoStation) {
    const auto frame = arrayFrame({element(playEvent(std::nullopt, u"Song"_qs))});
    for (const auto station : RadioStation::allCases)
        EXPECT_EQ(titleIn(frame, station), u"Song"_qs);
    const auto null = arrayFrame({element(R"({"station":null,"data":{"title":"Song"}})")});
    EXPECT_EQ(titleIn(null, RadioStation::joe), u"Song"_qs);
}

TEST(LiveTrackInFrameTest, OfAStationWithoutAFeedIsNoneWhenTheEventNamesOne) {
    EXPECT_EQ(titleIn(arrayFrame({element(playEvent(u"qmusic_be"_qs, u"Song"_qs))}), RadioStation::belRTL),
              noTrack);
}

TEST(LiveTrackInFrameTest, LastUsableOneWins) {
    const auto first = element(playEvent(u"joe_fm"_qs, u"First"_qs));
    const auto second = element(playEvent(u"joe_fm"_qs, u"Second"_qs));
    const auto foreign = element(playEvent(u"zofra_be"_qs, u"Foreign"_qs));
    EXPECT_EQ(titleIn(arrayFrame({first, second}), RadioStation::joe), u"Second"_qs);
    EXPECT_EQ(titleIn(arrayFrame({second, first, foreign, u"x"_qs, u""_qs}), RadioStation::joe), u"First"_qs);
}

TEST(LiveTrackInFrameTest, SkipsElementsThatAreNotUsable) {
    const auto good = element(playEvent(u"joe_fm"_qs, u"Good"_qs));
    const std::vector<QString> useless{
        u"not json"_qs,
        u""_qs,
        u"[]"_qs,
        u"null"_qs,
        u"{}"_qs,
        u"{\"action\":\"data\"}"_qs,
        u"{\"action\":\"data\",\"data\":null}"_qs,
        u"{\"action\":\"data\",\"data\":{}}"_qs,
        u"{\"data\":\"{\\\"data\\\":{\\\"title\\\":\\\"Bad\\\"}}\"}"_qs,
        u"{\"action\":\"Data\",\"data\":\"{\\\"data\\\":{\\\"title\\\":\\\"Bad\\\"}}\"}"_qs,
        u"{\"action\":\"data\",\"ids\":[1.5],\"data\":\"{\\\"data\\\":{\\\"title\\\":\\\"Bad\\\"}}\"}"_qs,
        element("not json"),
        element("[]"),
        element("{}"),
        element(R"({"station":"joe_fm"})"),
        element(R"({"station":"joe_fm","data":null})"),
        element(R"({"station":7,"data":{"title":"Bad"}})"),
        element(R"({"station":"joe_fm","data":{"title":7}})"),
    };
    for (const auto& bad : useless) {
        EXPECT_EQ(titleIn(arrayFrame({bad}), RadioStation::joe), noTrack) << bad.toStdString();
        EXPECT_EQ(titleIn(arrayFrame({good, bad}), RadioStation::joe), u"Good"_qs) << bad.toStdString();
        EXPECT_EQ(titleIn(arrayFrame({bad, good}), RadioStation::joe), u"Good"_qs) << bad.toStdString();
    }
}

TEST(LiveTrackInFrameTest, EntityActionAndIdsPlayNoPart) {
    const auto frame = arrayFrame(
        {u"{\"action\":\"data\",\"ids\":[9],\"data\":\"{\\\"station\\\":\\\"joe_fm\\\",\\\"entity\\\":\\\"jingles\\\",\\\"action\\\":\\\"stop\\\",\\\"data\\\":{\\\"title\\\":\\\"Song\\\"}}\"}"_qs});
    EXPECT_EQ(titleIn(frame, RadioStation::joe), u"Song"_qs);
}

TEST(LiveTrackInFrameTest, ATrackWithNothingInItIsStillATrack) {
    const auto track = liveTrackInFrame(arrayFrame({element(R"({"data":{}})")}), RadioStation::joe);
    ASSERT_TRUE(track);
    EXPECT_EQ(track->formattedCurrent(), u"Radio"_qs);
}

TEST(LiveTrackInFrameTest, CostsABoundedEffort) {
    const auto good = element(playEvent(u"joe_fm"_qs, u"Good"_qs));
    const QString costly = u"["_qs + u"[],"_qs.repeated(4'000) + u"[]]"_qs;
    EXPECT_EQ(titleIn(arrayFrame({good, costly}), RadioStation::joe), u"Good"_qs);
    EXPECT_EQ(titleIn(arrayFrame({costly, costly, costly, good}), RadioStation::joe), u"Good"_qs)
        << "the last one is looked at first";
    EXPECT_EQ(titleIn(arrayFrame({good, costly, costly, costly}), RadioStation::joe), noTrack);
}

TEST(LiveTrackInFrameTest, WholeFrameIsDroppedWhenItIsNoListOfTexts) {
    const auto good = element(playEvent(u"joe_fm"_qs, u"Good"_qs));
    auto list = QJsonArray{good};
    const auto frameOf = [](const QJsonArray& array) {
        return u"a"_qs + QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
    };
    ASSERT_EQ(titleIn(frameOf(list), RadioStation::joe), u"Good"_qs);
    for (const QJsonValue& intruder : {QJsonValue(1), QJsonValue(true), QJsonValue(QJsonValue::Null),
                                       QJsonValue(QJsonObject()), QJsonValue(QJsonArray())}) {
        EXPECT_EQ(titleIn(frameOf({good, intruder}), RadioStation::joe), noTrack);
        EXPECT_EQ(titleIn(frameOf({intruder, good}), RadioStation::joe), noTrack);
    }
    for (const auto& bad : {u"a[]"_qs, u"a["_qs, u"a"_qs, u""_qs, u"a[\"x\""_qs, u"a[\"x\"]]"_qs, u"a{}"_qs})
        EXPECT_EQ(titleIn(bad, RadioStation::joe), noTrack) << bad.toStdString();
}

TEST(JoinMessageTest, IsAListWithOneStringThatHoldsTheObject) {
    const auto message = joinMessage(RadioStation::zofraClassX);
    ASSERT_TRUE(message);
    const auto list = QJsonDocument::fromJson(message->toUtf8()).array();
    ASSERT_EQ(list.size(), 1);
    ASSERT_TRUE(list.at(0).isString());
    const auto object = QJsonDocument::fromJson(list.at(0).toString().toUtf8()).object();
    const QJsonObject expected{{u"action"_qs, u"join"_qs},
                               {u"id"_qs, 1},
                               {u"sub"_qs, QJsonObject{{u"station"_qs, u"zofra_be_class_x"_qs},
                                                       {u"entity"_qs, u"plays"_qs},
                                                       {u"action"_qs, u"play"_qs}}},
                               {u"backlog"_qs, 1}};
    EXPECT_EQ(object, expected);
}

TEST(JoinMessageTest, IsCompact) {
    EXPECT_EQ(
        joinMessage(RadioStation::qmusic),
        uR"(["{\"action\":\"join\",\"backlog\":1,\"id\":1,\"sub\":{\"action\":\"play\",\"entity\":\"plays\",)"_qs
        uR"(\"station\":\"qmusic_be\"}}"])"_qs);
}

TEST(JoinMessageTest, IsNothingForAStationWithoutAFeed) {
    for (std::size_t i = 4; i < RadioStation::allCases.size(); ++i)
        EXPECT_EQ(joinMessage(RadioStation::allCases[i]), std::nullopt);
}

TEST(LiveSocketUrlTest, HasAServerNumberOfThreeDigitsAndASessionOf32HexCharacters) {
    static const QRegularExpression form(
        u"^wss://live\\.example/api/([1-9][0-9]{2})/([0-9a-f]{32})/websocket$"_qs);
    QSet<QString> servers;
    QSet<QString> sessions;
    for (int i = 0; i < 2000; ++i) {
        const auto url = liveSocketUrl(u"live.example"_qs);
        ASSERT_TRUE(url);
        const auto match = form.match(url->toString());
        ASSERT_TRUE(match.hasMatch()) << url->toString().toStdString();
        servers.insert(match.captured(1));
        sessions.insert(match.captured(2));
    }
    EXPECT_EQ(sessions.size(), 2000);
    // 2000 draws from 900: fewer than 600 different ones would be a miracle.
    EXPECT_GT(servers.size(), 600);
}

TEST(LiveSocketUrlTest, TakesAPortAndRefusesWhatIsNoHost) {
    EXPECT_EQ(liveSocketUrl(u"127.0.0.1:8443"_qs)->port(), 8443);
    EXPECT_EQ(liveSocketUrl(u""_qs), std::nullopt);
    EXPECT_EQ(liveSocketUrl(u"two words"_qs), std::nullopt);
    EXPECT_EQ(liveSocketUrl(u"host:99999"_qs), std::nullopt);
}

} // namespace
} // namespace zofra
