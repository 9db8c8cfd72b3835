// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/LiveTrack.h"

#include "metadata/JsonText.h"
#include "tests/support/PrintQt.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>
#include <limits>

namespace zofra {
namespace {

std::optional<ZofraLivePlayEvent> decodeEvent(const QByteArray& utf8) {
    JsonBudget budget;
    return decodeDocument<ZofraLivePlayEvent>(utf8, budget);
}

std::optional<SockJSDataPayload> decodePayload(const QByteArray& utf8) {
    JsonBudget budget;
    return decodeDocument<SockJSDataPayload>(utf8, budget);
}

ZofraLiveTrackData track(std::optional<QString> title, std::optional<QString> artist) {
    ZofraLiveTrackData data;
    data.title = std::move(title);
    if (artist)
        data.artist = ZofraLiveArtist{artist};
    return data;
}

ZofraNextTrack nextTrack(std::optional<QString> title, std::optional<QString> artist) {
    ZofraNextTrack data;
    data.title = std::move(title);
    if (artist)
        data.artist = ZofraLiveArtist{artist};
    return data;
}

TEST(FormattedCurrentTest, JoinsTrimmedArtistAndTitle) {
    EXPECT_EQ(track(u"  Song \n"_qs, u"Band"_qs).formattedCurrent(), u"Band – Song"_qs);
    EXPECT_EQ(track(u"\u00A0Song\u2028"_qs, u"\tBand\r\n"_qs).formattedCurrent(), u"Band – Song"_qs);
}

TEST(FormattedCurrentTest, TakesTheOneThereIs) {
    EXPECT_EQ(track(u"Song"_qs, std::nullopt).formattedCurrent(), u"Song"_qs);
    EXPECT_EQ(track(u"Song"_qs, u" "_qs).formattedCurrent(), u"Song"_qs);
    EXPECT_EQ(track(std::nullopt, u" Band "_qs).formattedCurrent(), u"Band"_qs);
    EXPECT_EQ(track(u"\n"_qs, u"Band"_qs).formattedCurrent(), u"Band"_qs);
}

TEST(FormattedCurrentTest, IsRadioWhenThereIsNeither) {
    EXPECT_EQ(track(std::nullopt, std::nullopt).formattedCurrent(), u"Radio"_qs);
    EXPECT_EQ(track(u" "_qs, u"\t"_qs).formattedCurrent(), u"Radio"_qs);
    ZofraLiveTrackData withoutName;
    withoutName.artist = ZofraLiveArtist{};
    EXPECT_EQ(withoutName.formattedCurrent(), u"Radio"_qs);
}

TEST(FormattedCurrentTest, KeepsTheTextAsItIs) {
    EXPECT_EQ(track(u"AC/DC & <b>\u202E\u0007 a  b"_qs, std::nullopt).formattedCurrent(),
              u"AC/DC & <b>\u202E\u0007 a  b"_qs);
}

TEST(FormattedNextTest, FollowsTheSameStepsButMayBeEmpty) {
    EXPECT_EQ(nextTrack(u" Song\n"_qs, u" Band "_qs).formatted(), u"Band – Song"_qs);
    EXPECT_EQ(nextTrack(u"Song"_qs, std::nullopt).formatted(), u"Song"_qs);
    EXPECT_EQ(nextTrack(std::nullopt, u"Band"_qs).formatted(), u"Band"_qs);
    EXPECT_EQ(nextTrack(u" "_qs, u""_qs).formatted(), QString());
    EXPECT_EQ(nextTrack(std::nullopt, std::nullopt).formatted(), QString());
}

TEST(PlayEventTest, DecodesEveryField) {
    const auto event = decodeEvent(
        R"({"station":"joe_fm","entity":"plays","action":"play","other":[1],"data":{"title":"T","slug":null,
            "artist":{"name":"A","id":3},"next":{"title":"N","artist":{"name":"M"}}}})");
    ASSERT_TRUE(event);
    EXPECT_EQ(event->station, u"joe_fm"_qs);
    EXPECT_EQ(event->entity, u"plays"_qs);
    EXPECT_EQ(event->action, u"play"_qs);
    ASSERT_TRUE(event->data);
    EXPECT_EQ(event->data->formattedCurrent(), u"A – T"_qs);
    ASSERT_TRUE(event->data->next);
    EXPECT_EQ(event->data->next->formatted(), u"M – N"_qs);
}

TEST(PlayEventTest, LeavesMissingAndNullFieldsAbsent) {
    EXPECT_EQ(decodeEvent("{}"), ZofraLivePlayEvent{});
    EXPECT_EQ(decodeEvent(R"({"station":null,"entity":null,"action":null,"data":null})"),
              ZofraLivePlayEvent{});
    const auto event = decodeEvent(R"({"data":{"title":null,"artist":{"name":null},"next":null}})");
    ASSERT_TRUE(event && event->data);
    EXPECT_EQ(event->data->title, std::nullopt);
    EXPECT_EQ(event->data->artist, ZofraLiveArtist{});
    EXPECT_EQ(event->data->next, std::nullopt);
}

TEST(PlayEventTest, KeysAreCaseSensitive) {
    EXPECT_EQ(decodeEvent(R"({"Station":"joe_fm","STATION":5})"), ZofraLivePlayEvent{});
}

class UndecodableEventTest : public testing::TestWithParam<const char*> {};
TEST_P(UndecodableEventTest, GivesNothing) {
    EXPECT_FALSE(decodeEvent(GetParam()));
}
INSTANTIATE_TEST_SUITE_P(
    Documents, UndecodableEventTest,
    testing::Values("", "[]", "\"x\"", "{", R"({"station":1})", R"({"station":true})", R"({"station":{}})",
                    R"({"entity":1})", R"({"action":[]})", R"({"data":"{}"})", R"({"data":[]})",
                    R"({"data":false})", R"({"data":{"title":5}})", R"({"data":{"artist":"A"}})",
                    R"({"data":{"artist":{"name":1}}})", R"({"data":{"next":[]}})",
                    R"({"data":{"next":{"title":0}}})", R"({"data":{"next":{"artist":[]}}})",
                    R"({"data":{"next":{"artist":{"name":{}}}}})", R"({"data":{"title":"\ud800"}})"));

TEST(TrackPayloadTest, DecodesEveryField) {
    const auto payload = decodePayload(R"({"action":"data","ids":[0,-2,3],"data":"{}","key":"2"})");
    ASSERT_TRUE(payload);
    EXPECT_EQ(payload->action, u"data"_qs);
    EXPECT_EQ(payload->ids, (std::vector<std::int64_t>{0, -2, 3}));
    EXPECT_EQ(payload->data, u"{}"_qs);
    EXPECT_EQ(decodePayload(R"({"action":null,"ids":null,"data":null})"), SockJSDataPayload{});
}

TEST(TrackPayloadTest, TakesWholeNumbersHoweverTheyAreWritten) {
    const auto payload = decodePayload(
        R"({"ids":[1.0,1e3,-0,-0.0,0e5,9223372036854775807,-9223372036854775808,1000000000000000001]})");
    ASSERT_TRUE(payload);
    EXPECT_EQ(payload->ids,
              (std::vector<std::int64_t>{1, 1000, 0, 0, 0, std::numeric_limits<std::int64_t>::max(),
                                         std::numeric_limits<std::int64_t>::min(), 1000000000000000001}));
    EXPECT_EQ(decodePayload(R"({"ids":[]})")->ids, std::vector<std::int64_t>());
}

class UndecodablePayloadTest : public testing::TestWithParam<const char*> {};
TEST_P(UndecodablePayloadTest, GivesNothing) {
    EXPECT_FALSE(decodePayload(GetParam()));
}
INSTANTIATE_TEST_SUITE_P(Documents, UndecodablePayloadTest,
                         testing::Values("", "[]", R"({"action":1})", R"({"ids":1})", R"({"ids":{}})",
                                         R"({"ids":[1.5]})", R"({"ids":[1,0.5]})", R"({"ids":["1"]})",
                                         R"({"ids":[null]})", R"({"ids":[true]})", R"({"ids":[[1]]})",
                                         R"({"ids":[1e30]})", R"({"ids":[9223372036854775808]})",
                                         R"({"ids":[-9223372036854777856]})", R"({"data":{}})",
                                         R"({"data":1})"));

TEST(TrackRecordsTest, ComeBackFromTheirOwnEncoding) {
    ZofraLivePlayEvent event;
    event.station = u"zofra_be"_qs;
    event.entity = u"plays"_qs;
    event.action = u"play"_qs;
    event.data = track(u"Song \"1\" é 😀"_qs, u"Band"_qs);
    event.data->next = nextTrack(u"Later"_qs, std::nullopt);
    const auto utf8 = QJsonDocument(toJson(event).toObject()).toJson(QJsonDocument::Compact);
    EXPECT_EQ(decodeEvent(utf8), event);

    const SockJSDataPayload payload{u"data"_qs, std::vector<std::int64_t>{7, -1}, QString::fromUtf8(utf8)};
    EXPECT_EQ(decodePayload(QJsonDocument(toJson(payload).toObject()).toJson()), payload);
}

TEST(TrackRecordsTest, EncodingLeavesAbsentFieldsOut) {
    EXPECT_TRUE(toJson(ZofraLiveArtist{}).toObject().isEmpty());
    EXPECT_TRUE(toJson(ZofraNextTrack{}).toObject().isEmpty());
    EXPECT_TRUE(toJson(ZofraLiveTrackData{}).toObject().isEmpty());
    EXPECT_TRUE(toJson(ZofraLivePlayEvent{}).toObject().isEmpty());
    EXPECT_TRUE(toJson(SockJSDataPayload{}).toObject().isEmpty());
    EXPECT_EQ(QJsonDocument(toJson(track(u"T"_qs, u"A"_qs)).toObject()).toJson(QJsonDocument::Compact),
              R"({"artist":{"name":"A"},"title":"T"})");
}

} // namespace
} // namespace zofra
