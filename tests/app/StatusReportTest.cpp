// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusReport.h"

#include "tests/support/PrintQt.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace zofra {
namespace {

const QString version = u"1.0 (Build 1)"_qs;

/// A room of `players` players.
RadioState::Room room(const QString& id, const QString& title, int players) {
    SonosSpeaker speaker;
    speaker.id = id;
    return {{title, speaker, QList<SonosSpeaker>(players, speaker)}, title};
}

RadioState sample() {
    RadioState state;
    state.station = RadioStation::zofraClassX;
    state.isPlaying = true;
    state.volume = 0.8F;
    state.targetTitle = u"This Mac"_qs;
    state.currentSong = u"Artist – Song"_qs;
    state.language = AppLanguage::fr;
    state.tray = StatusItemMode::hostmenu;
    return state;
}

QString json(const RadioState& state) {
    return QString::fromUtf8(QJsonDocument(toJson(state, version, {})).toJson(QJsonDocument::Compact));
}

TEST(StatusReportTest, IsOneObjectWithEveryField) {
    EXPECT_EQ(json(sample()),
              u"{\"buffering\":false,\"language\":\"fr\",\"network_denied\":false,\"next\":null,\"output\":"
              u"\"here\","
              "\"output_title\":\"This Mac\",\"playing\":true,\"rooms\":[],\"scanning\":false,"
              "\"song\":\"Artist – Song\",\"station\":\"zofra_class_x\",\"tray\":\"hostmenu\","
              "\"version\":\"1.0 (Build 1)\",\"volume\":0.8}"_qs);
}

TEST(StatusReportTest, SaysAVolumeBetweenSilenceAndFull) {
    RadioState state = sample();
    for (const auto& [volume, said] : {std::pair(0.62F, 0.62), std::pair(5.0F, 1.0), std::pair(0.0F, 0.0)}) {
        state.volume = volume;
        EXPECT_EQ(toJson(state, version, {}).value(u"volume"_qs).toDouble(), said);
    }
}

TEST(StatusReportTest, SaysTheOutputAndTheRooms) {
    RadioState state = sample();
    state.target = AudioOutputTarget::sonosEverywhere();
    EXPECT_EQ(toJson(state, version, {}).value(u"output"_qs).toString(), u"everywhere"_qs);
    state.target = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    state.rooms = {room(u"RINCON_1"_qs, u"Kitchen"_qs, 2)};
    state.nextSong = u"Next"_qs;
    const QJsonObject object = toJson(state, version, {});
    EXPECT_EQ(object.value(u"output"_qs).toString(), u"RINCON_1"_qs);
    EXPECT_EQ(object.value(u"next"_qs).toString(), u"Next"_qs);
    EXPECT_EQ(
        QString::fromUtf8(QJsonDocument(object.value(u"rooms"_qs).toArray()).toJson(QJsonDocument::Compact)),
        u"[{\"id\":\"RINCON_1\",\"players\":2,\"title\":\"Kitchen\"}]"_qs);
}

TEST(StatusReportTest, LinesNameEachFieldOnceAndForgeNone) {
    RadioState state = sample();
    state.currentSong = u"A\nvolume: 0"_qs;
    const QStringList lines = statusLines(toJson(state, version, {})).split(u'\n');
    EXPECT_EQ(lines.size(), 14);
    EXPECT_EQ(lines.at(0), u"station: zofra_class_x"_qs);
    EXPECT_EQ(lines.at(1), u"playing: yes"_qs);
    EXPECT_EQ(lines.at(3), u"volume: 0.8"_qs);
    EXPECT_EQ(lines.at(7), u"next:"_qs);
    EXPECT_EQ(lines.filter(u"volume: 0"_qs).size(), 2) << "the song's stays within its line";
}

TEST(StatusReportTest, SaysWhatIsLeftUntilTheMusicStops) {
    RadioState state = sample();
    const TimePoint now{};
    EXPECT_FALSE(toJson(state, version, now).contains(u"stops_in"_qs));
    state.stopsAt = now + std::chrono::milliseconds(89500);
    EXPECT_EQ(toJson(state, version, now).value(u"stops_in"_qs).toInteger(), 90);
    EXPECT_EQ(statusLines(toJson(state, version, now)).section(u'\n', -1), u"stops_in: 90 s"_qs);
    EXPECT_EQ(toJson(state, version, now + std::chrono::minutes(2)).value(u"stops_in"_qs).toInteger(), 0);
}

TEST(ChangeLinesTest, FirstTellWhatThereIs) {
    ChangeLines lines;
    EXPECT_EQ(lines.update(sample()),
              (QStringList{u"station: Zofra Class X"_qs, u"song: Artist – Song"_qs, u"state: playing"_qs,
                           u"output: This Mac"_qs, u"volume: 80 %"_qs, u"language: fr"_qs}));
    EXPECT_EQ(lines.update(sample()), QStringList()) << "nothing has changed";
}

TEST(ChangeLinesTest, ThenOneLineForEachChange) {
    ChangeLines lines;
    RadioState state = sample();
    static_cast<void>(lines.update(state));
    state.isBuffering = true;
    EXPECT_EQ(lines.update(state), QStringList{u"state: buffering"_qs});
    state.isPlaying = false;
    EXPECT_EQ(lines.update(state), QStringList{u"state: stopped"_qs});
    state.nextSong = u"Next – One"_qs;
    EXPECT_EQ(lines.update(state), QStringList{u"next: Next – One"_qs});
    state.nextSong.reset();
    EXPECT_EQ(lines.update(state), QStringList{u"next:"_qs});
    state.rooms = {room(u"1"_qs, u"Bath"_qs, 1), room(u"2"_qs, u"Kitchen (Sonos)"_qs, 2)};
    EXPECT_EQ(lines.update(state), QStringList{u"rooms: 2 (Bath, Kitchen (Sonos))"_qs});
    state.rooms.clear();
    EXPECT_EQ(lines.update(state), QStringList{u"rooms: 0"_qs});
    state.volume = 0.29F;
    state.targetTitle = u"Kitchen"_qs;
    EXPECT_EQ(lines.update(state), (QStringList{u"output: Kitchen"_qs, u"volume: 29 %"_qs}));
    state.isScanning = true;
    state.tray = StatusItemMode::direct;
    EXPECT_EQ(lines.update(state), QStringList());
}

TEST(ChangeLinesTest, ATextFromTheNetworkStaysOnItsLine) {
    ChangeLines lines;
    RadioState state = sample();
    state.currentSong = u"x\nstate: stopped\x1B[2J"_qs;
    for (const QString& line : lines.update(state)) {
        EXPECT_FALSE(line.contains(u'\n'));
        EXPECT_FALSE(line.contains(QChar(0x1B)));
    }
}

} // namespace
} // namespace zofra
