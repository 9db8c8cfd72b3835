// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/OnAirItem.h"

#include "tests/support/PrintQt.h"

#include <QJsonDocument>

#include <gtest/gtest.h>
#include <tuple>

namespace zofra {
namespace {

OnAirItem itemFrom(const char* json) {
    return OnAirItem::fromJson(QJsonDocument::fromJson(json).object());
}

OnAirItem item(const QString& title, std::optional<double> start, std::optional<double> stop = std::nullopt) {
    OnAirItem made;
    made.isSong = true;
    made.title = title;
    made.startTime = start;
    made.stopTime = stop;
    return made;
}

QString best(const std::vector<OnAirItem>& items, double now) {
    const auto chosen = selectBest(items, now);
    return chosen ? chosen->title : u"(none)"_qs;
}

TEST(OnAirItemTest, ReadsAndTrimsEveryKey) {
    const auto read = itemFrom(R"({"song":true,"artistName":" A\n","name":"\tT ","description":" D ",
                                   "startTime":"100","stopTime":200.5,"type":"PE_E"})");
    EXPECT_TRUE(read.isSong);
    EXPECT_EQ(read.artist, u"A"_qs);
    EXPECT_EQ(read.title, u"T"_qs);
    EXPECT_EQ(read.desc, u"D"_qs);
    EXPECT_EQ(read.startTime, 100.0);
    EXPECT_EQ(read.stopTime, 200.5);
}

TEST(OnAirItemTest, LeavesDefaultsForMissingKeysAndOtherTypes) {
    EXPECT_EQ(itemFrom("{}"), OnAirItem{});
    EXPECT_EQ(
        itemFrom(R"({"song":1,"artistName":2,"name":[],"description":{},"startTime":true,"stopTime":null})"),
        OnAirItem{});
    EXPECT_EQ(itemFrom(R"({"song":"true","artistName":null,"name":true,"startTime":[1],"stopTime":{}})"),
              OnAirItem{});
    EXPECT_EQ(itemFrom(R"({"song":null})"), OnAirItem{});
}

TEST(OnAirItemTest, FormatsArtistAndTitleOrTheTitleAlone) {
    OnAirItem made;
    EXPECT_EQ(made.formatted(), std::nullopt);
    made.artist = u"A"_qs;
    EXPECT_EQ(made.formatted(), std::nullopt) << "an artist alone is not shown";
    made.title = u"T"_qs;
    EXPECT_EQ(made.formatted(), u"A – T"_qs);
    made.artist.clear();
    made.desc = u"D"_qs;
    EXPECT_EQ(made.formatted(), u"T"_qs);
}

class TimestampTest : public testing::TestWithParam<std::tuple<QString, std::optional<double>>> {};
TEST_P(TimestampTest, OfAText) {
    EXPECT_EQ(timestamp(QJsonValue(std::get<0>(GetParam()))), std::get<1>(GetParam()));
}
using Stamp = std::tuple<QString, std::optional<double>>;
INSTANTIATE_TEST_SUITE_P(Decimal, TimestampTest,
                         testing::Values(Stamp(u"1763670605"_qs, 1763670605.0), Stamp(u" 1.5 \n"_qs, 1.5),
                                         Stamp(u"-3"_qs, -3.0), Stamp(u"+3"_qs, 3.0), Stamp(u".5"_qs, 0.5),
                                         Stamp(u"5."_qs, 5.0), Stamp(u"1e3"_qs, 1000.0),
                                         Stamp(u"1E+3"_qs, 1000.0), Stamp(u"12e-1"_qs, 1.2),
                                         Stamp(u"007"_qs, 7.0), Stamp(u"0"_qs, 0.0)));
INSTANTIATE_TEST_SUITE_P(
    Other, TimestampTest,
    testing::Values(Stamp(QString(), {}), Stamp(u"  "_qs, {}), Stamp(u"12x"_qs, {}), Stamp(u"1 2"_qs, {}),
                    Stamp(u"x12"_qs, {}), Stamp(u"1,5"_qs, {}), Stamp(u"1,000"_qs, {}), Stamp(u"."_qs, {}),
                    Stamp(u"+"_qs, {}), Stamp(u"e5"_qs, {}), Stamp(u"1e"_qs, {}), Stamp(u"1e+"_qs, {}),
                    Stamp(u"--1"_qs, {}), Stamp(u"1.2.3"_qs, {}), Stamp(u"nan"_qs, {}), Stamp(u"NaN"_qs, {}),
                    Stamp(u"inf"_qs, {}), Stamp(u"-Infinity"_qs, {}), Stamp(u"0x10"_qs, {}),
                    Stamp(u"0x1p3"_qs, {}), Stamp(u"1e400"_qs, {}), Stamp(u"-1e400"_qs, {}),
                    Stamp(u"1e-400"_qs, {}), Stamp(u"١٢"_qs, {}), Stamp(u"2025-11-20T21:30:05Z"_qs, {}),
                    Stamp(u"1"_qs + QChar(0) + u"2"_qs, {})));

TEST(TimestampTest, OfOtherValues) {
    EXPECT_EQ(timestamp(QJsonValue(1763670605)), 1763670605.0);
    EXPECT_EQ(timestamp(QJsonValue(-0.25)), -0.25);
    EXPECT_EQ(timestamp(QJsonValue(true)), std::nullopt);
    EXPECT_EQ(timestamp(QJsonValue(QJsonValue::Null)), std::nullopt);
    EXPECT_EQ(timestamp(QJsonValue(QJsonValue::Undefined)), std::nullopt);
    EXPECT_EQ(timestamp(QJsonObject()), std::nullopt);
}

TEST(SelectBestTest, IsTheFirstOnAirInTheListsOrder) {
    const std::vector<OnAirItem> items{item(u"A"_qs, 100, 200), item(u"B"_qs, 150)};
    EXPECT_EQ(best(items, 160), u"A"_qs);
    EXPECT_EQ(best(items, 201), u"B"_qs);
    EXPECT_EQ(best({item(u"B"_qs, 150), item(u"A"_qs, 100, 200)}, 160), u"B"_qs);
}

TEST(SelectBestTest, CountsBothEndsAsOnAir) {
    const std::vector<OnAirItem> items{item(u"A"_qs, 100, 200), item(u"B"_qs, 300, 400)};
    EXPECT_EQ(best(items, 100), u"A"_qs);
    EXPECT_EQ(best(items, 200), u"A"_qs);
    EXPECT_EQ(best(items, 99.9), u"B"_qs);
    EXPECT_EQ(best(items, 200.1), u"B"_qs);
}

TEST(SelectBestTest, FallsBackToTheGreatestStart) {
    EXPECT_EQ(best({item(u"A"_qs, 100, 200)}, 250), u"A"_qs);
    EXPECT_EQ(best({item(u"A"_qs, 100, 200)}, 50), u"A"_qs);
    EXPECT_EQ(
        best({item(u"N"_qs, {}), item(u"A"_qs, 100, 110), item(u"B"_qs, 150, 160), item(u"C"_qs, 120, 130)},
             500),
        u"B"_qs);
    EXPECT_EQ(best({item(u"A"_qs, 100, 110), item(u"B"_qs, 100, 120)}, 500), u"A"_qs)
        << "the first of equal ones";
}

TEST(SelectBestTest, TakesAnInvertedOrEmptyWindowAsOpenEnded) {
    EXPECT_EQ(best({item(u"A"_qs, 100, 90), item(u"B"_qs, 500, 600)}, 550), u"A"_qs);
    EXPECT_EQ(best({item(u"A"_qs, 100, 100), item(u"B"_qs, 500, 600)}, 550), u"A"_qs);
    EXPECT_EQ(best({item(u"A"_qs, 100, 90), item(u"B"_qs, 40, 45)}, 99), u"A"_qs) << "only by its start";
}

TEST(SelectBestTest, WithoutAnyStartIsTheFirst) {
    EXPECT_EQ(best({item(u"A"_qs, {}, 100), item(u"B"_qs, {})}, 50), u"A"_qs);
    EXPECT_EQ(selectBest({}, 50), std::nullopt);
}

TEST(OnAirTextTest, PrefersSongs) {
    auto programme = item(u"Show"_qs, 100, 200);
    programme.isSong = false;
    EXPECT_EQ(onAirText({programme, item(u"Song"_qs, 100, 200)}, 150), u"Song"_qs);
    EXPECT_EQ(onAirText({programme, item(u"Song"_qs, 10, 20)}, 150), u"Song"_qs) << "even one that has ended";
    EXPECT_EQ(onAirText({programme, item(u"Song"_qs, {})}, 150), u"Song"_qs);
    EXPECT_EQ(onAirText({programme}, 150), u"Show"_qs);
    EXPECT_EQ(onAirText({programme, item(QString(), 100, 200)}, 150), u"Show"_qs) << "a song without a text";
}

TEST(OnAirTextTest, LeavesItemsWithoutATextOut) {
    auto artistOnly = item(QString(), 100, 200);
    artistOnly.artist = u"Band"_qs;
    EXPECT_EQ(onAirText({artistOnly}, 150), std::nullopt);
    EXPECT_EQ(onAirText({artistOnly, item(u"Song"_qs, 10, 20)}, 150), u"Song"_qs);
    EXPECT_EQ(onAirText({}, 150), std::nullopt);
}

TEST(OnAirItemsTest, AreTheStationsOwnInOrder) {
    const auto items =
        onAirItems(R"({"results":{"6":[{"name":"A"},{"name":"B"}],"7":[{"name":"C"}]}})", u"6"_qs);
    ASSERT_TRUE(items);
    ASSERT_EQ(items->size(), 2U);
    EXPECT_EQ(items->at(0).title, u"A"_qs);
    EXPECT_EQ(items->at(1).title, u"B"_qs);
    EXPECT_EQ(onAirItems(R"({"results":{"6":[]}})", u"6"_qs), std::vector<OnAirItem>());
}

TEST(OnAirItemsTest, MayBeAsManyAsTheLongestBodyHolds) {
    QByteArray body = R"({"results":{"6":[)";
    int count = 0;
    for (; body.size() < 1024 * 1024 - 200; ++count)
        body += (count > 0 ? "," : "") +
                QByteArray(R"({"song":true,"artistName":"Somebody","name":"A title","description":"",)") +
                R"("startTime":)" + QByteArray::number(1700000000 + count) + R"(,"stopTime":"1700000000"})";
    const auto items = onAirItems(body + "]}}", u"6"_qs);
    ASSERT_TRUE(items);
    EXPECT_EQ(static_cast<int>(items->size()), count);
}

TEST(OnAirItemsTest, AreNoneInADocumentOfEndlesslyManyValues) {
    const QByteArray body =
        R"({"results":{"6":[{"name":"A"}]},"x":[0)" + QByteArray(",0").repeated(100'000) + "]}";
    EXPECT_EQ(onAirItems(body, u"6"_qs), std::nullopt);
}

TEST(OnAirItemsTest, MayComeAsAJsonpCall) {
    const auto items =
        onAirItems(" cb({\"results\":{\"6\":[{\"name\":\"D\xC3\xA9j\xC3\xA0\"}]}}) ; ", u"6"_qs);
    ASSERT_TRUE(items && items->size() == 1);
    EXPECT_EQ(items->front().title, u"Déjà"_qs);
}

class BadOnAirAnswerTest : public testing::TestWithParam<QByteArray> {};
TEST_P(BadOnAirAnswerTest, GivesNothing) {
    EXPECT_EQ(onAirItems(GetParam(), u"6"_qs), std::nullopt);
}
INSTANTIATE_TEST_SUITE_P(
    Bodies, BadOnAirAnswerTest,
    testing::Values(QByteArray(), QByteArray("[]"), QByteArray("{}"), QByteArray("cb()"),
                    QByteArray("<html>"), QByteArray(R"({"results":null})"), QByteArray(R"({"results":[]})"),
                    QByteArray(R"({"results":{}})"), QByteArray(R"({"results":{"60":[]}})"),
                    QByteArray(R"({"results":{"6":null}})"), QByteArray(R"({"results":{"6":{}}})"),
                    QByteArray(R"({"results":{"6":"x"}})"), QByteArray(R"({"results":{"6":[{},1]}})"),
                    QByteArray(R"({"results":{"6":[null]}})"), QByteArray(R"({"results":{"6":[[]]}})"),
                    QByteArray(R"({"Results":{"6":[]}})"),
                    QByteArray("{\"results\":{\"6\":[]},\"x\":\"\xFF\"}"),
                    QByteArray("{\"results\":{\"6\":[]}")));

} // namespace
} // namespace zofra
