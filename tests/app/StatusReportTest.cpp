// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusReport.h"

#include "app/ChangeLines.h"
#include "tests/support/PrintQt.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace zofra {
namespace {

StatusReport sample() {
    StatusReport report;
    report.station = RadioStation::zofraClassX;
    report.playing = true;
    report.volume = 0.8F;
    report.outputTitle = u"This Mac"_qs;
    report.song = u"Artist – Song"_qs;
    report.language = AppLanguage::fr;
    report.tray = u"hostmenu"_qs;
    report.version = u"1.0 (Build 1)"_qs;
    return report;
}

QString json(const StatusReport& report) {
    return QString::fromUtf8(QJsonDocument(toJson(report)).toJson(QJsonDocument::Compact));
}

TEST(StatusReport, IsOneObjectWithEveryField) {
    EXPECT_EQ(json(sample()),
              u"{\"buffering\":false,\"language\":\"fr\",\"network_denied\":false,\"next\":null,\"output\":"
              u"\"here\","
              "\"output_title\":\"This Mac\",\"playing\":true,\"rooms\":[],\"scanning\":false,"
              "\"song\":\"Artist – Song\",\"station\":\"zofra_class_x\",\"tray\":\"hostmenu\","
              "\"version\":\"1.0 (Build 1)\",\"volume\":0.8}"_qs);
}

TEST(StatusReport, SaysAVolumeBetweenSilenceAndFull) {
    StatusReport report = sample();
    for (const auto& [volume, said] : {std::pair(0.62F, 0.62), std::pair(5.0F, 1.0), std::pair(0.0F, 0.0)}) {
        report.volume = volume;
        EXPECT_EQ(toJson(report).value(u"volume"_qs).toDouble(), said);
    }
}

TEST(StatusReport, SaysTheOutputAndTheRooms) {
    StatusReport report = sample();
    report.output = AudioOutputTarget::sonosEverywhere();
    EXPECT_EQ(toJson(report).value(u"output"_qs).toString(), u"everywhere"_qs);
    report.output = AudioOutputTarget::sonos(u"RINCON_1"_qs);
    report.rooms = {{u"RINCON_1"_qs, u"Kitchen"_qs, 2}};
    report.next = u"Next"_qs;
    const QJsonObject object = toJson(report);
    EXPECT_EQ(object.value(u"output"_qs).toString(), u"RINCON_1"_qs);
    EXPECT_EQ(object.value(u"next"_qs).toString(), u"Next"_qs);
    EXPECT_EQ(
        QString::fromUtf8(QJsonDocument(object.value(u"rooms"_qs).toArray()).toJson(QJsonDocument::Compact)),
        u"[{\"id\":\"RINCON_1\",\"players\":2,\"title\":\"Kitchen\"}]"_qs);
}

TEST(StatusReport, LinesNameEachFieldOnceAndForgeNone) {
    StatusReport report = sample();
    report.song = u"A\nvolume: 0"_qs;
    const QStringList lines = statusLines(toJson(report)).split(u'\n');
    EXPECT_EQ(lines.size(), 14);
    EXPECT_EQ(lines.at(0), u"station: zofra_class_x"_qs);
    EXPECT_EQ(lines.at(1), u"playing: yes"_qs);
    EXPECT_EQ(lines.at(3), u"volume: 0.8"_qs);
    EXPECT_EQ(lines.at(7), u"next:"_qs);
    EXPECT_EQ(lines.filter(u"volume: 0"_qs).size(), 2) << "the song's stays within its line";
}

TEST(ChangeLines, FirstTellWhatThereIs) {
    ChangeLines lines;
    EXPECT_EQ(lines.update(sample()),
              (QStringList{u"station: Zofra Class X"_qs, u"song: Artist – Song"_qs, u"state: playing"_qs,
                           u"output: This Mac"_qs, u"volume: 80 %"_qs, u"language: fr"_qs}));
    EXPECT_EQ(lines.update(sample()), QStringList()) << "nothing has changed";
}

TEST(ChangeLines, ThenOneLineForEachChange) {
    ChangeLines lines;
    StatusReport report = sample();
    static_cast<void>(lines.update(report));
    report.buffering = true;
    EXPECT_EQ(lines.update(report), QStringList{u"state: buffering"_qs});
    report.playing = false;
    EXPECT_EQ(lines.update(report), QStringList{u"state: stopped"_qs});
    report.next = u"Next – One"_qs;
    EXPECT_EQ(lines.update(report), QStringList{u"next: Next – One"_qs});
    report.next.reset();
    EXPECT_EQ(lines.update(report), QStringList{u"next:"_qs});
    report.rooms = {{u"1"_qs, u"Bath"_qs, 1}, {u"2"_qs, u"Kitchen (Sonos)"_qs, 2}};
    EXPECT_EQ(lines.update(report), QStringList{u"rooms: 2 (Bath, Kitchen (Sonos))"_qs});
    report.rooms.clear();
    EXPECT_EQ(lines.update(report), QStringList{u"rooms: 0"_qs});
    report.volume = 0.29F;
    report.outputTitle = u"Kitchen"_qs;
    EXPECT_EQ(lines.update(report), (QStringList{u"output: Kitchen"_qs, u"volume: 29 %"_qs}));
    report.scanning = true;
    report.tray = u"direct"_qs;
    EXPECT_EQ(lines.update(report), QStringList());
}

TEST(ChangeLines, ATextFromTheNetworkStaysOnItsLine) {
    ChangeLines lines;
    StatusReport report = sample();
    report.song = u"x\nstate: stopped\x1B[2J"_qs;
    for (const QString& line : lines.update(report)) {
        EXPECT_FALSE(line.contains(u'\n'));
        EXPECT_FALSE(line.contains(QChar(0x1B)));
    }
}

} // namespace
} // namespace zofra
