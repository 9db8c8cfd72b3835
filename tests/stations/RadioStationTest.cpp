// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/RadioStation.h"

#include "tests/support/FakeDefaultsStore.h"
#include "tests/support/PrintQt.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zofra {
namespace {

struct Expected {
    RadioStation::Case station;
    const char* rawValue;
    const char* displayName;
    const char* genre;
    const char* radioplayerId;
    const char* pathAAC;
    const char* pathMP3;
};

const std::vector<Expected>& catalogue() {
    static const std::vector<Expected> table{
        {RadioStation::zofra, "zofra", "Zofra", "Alternative Rock & Indie", "5067", "/zofra.aac",
         "/zofra.mp3"},
        {RadioStation::qmusic, "qmusic", "Qmusic", "Hits & Pop", "5050", "/qmusic.aac", "/qmusic.mp3"},
        {RadioStation::joe, "joe", "JOE", "80s, 90s & Pop Classics", "5051", "/joe.aac", "/joe.mp3"},
        {RadioStation::zofraClassX, "zofra_class_x", "Zofra Class X", "Classics & Classic Rock", "5077",
         "/zofra_classx.aac", "/zofra_classx.mp3"},
        {RadioStation::radioContact, "radio_contact", "Radio Contact", "Feel Good & Hits", "1",
         "/radiocontact-mp3-192.mp3", "/radiocontact-mp3-192.mp3"},
        {RadioStation::belRTL, "bel_rtl", "Bel RTL", "Info, Talk & Pop", "6", "/33prmb9subpwv",
         "/belrtl-mp3-192.mp3"},
        {RadioStation::insideRadio, "inside_radio", "Inside Radio", "Pop & Contemporary Hits", "1011",
         "/cm96zpmrmm0uv", "/cm96zpmrmm0uv"},
        {RadioStation::sudRadioBelgique, "sud_radio_belgique", "Sud Radio Belgique", "Variété & Pop", "154",
         "/sudradio-belgique", "/sudradio-belgique"},
        {RadioStation::sudRadioHainaut, "sud_radio_hainaut", "Sud Radio Hainaut", "Regional Mons & Pop",
         "1108", "/sudradio-hainaut", "/sudradio-hainaut"},
    };
    return table;
}

/// Hosts that differ in every key, from a file.
ServiceHosts distinctHosts() {
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("endpoints.ini")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[streams]\n");
    for (const auto& expected : catalogue()) {
        auto name = QByteArray(expected.rawValue);
        const auto host = QByteArray(name).replace('_', '-');
        file.write(name + "_aac=" + host + "-a.test:8443\n" + name + "_mp3=" + host + "-m.test\n");
    }
    file.close();
    ServiceHosts hosts;
    EXPECT_TRUE(hosts.overlay(file.fileName(), ServiceHosts::MissingFile::isRefused));
    return hosts;
}

TEST(RadioStationTest, isOneOfNineInDeclaredOrder) {
    ASSERT_EQ(RadioStation::allCases.size(), 9U);
    EXPECT_EQ(RadioStation::allCases.front(), RadioStation::zofra);
    EXPECT_EQ(RadioStation::allCases.back(), RadioStation::sudRadioHainaut);
    for (std::size_t i = 0; i < catalogue().size(); ++i)
        EXPECT_EQ(RadioStation(RadioStation::allCases.at(i)), RadioStation(catalogue().at(i).station));
}

TEST(RadioStationTest, carriesWhatTheCatalogueSays) {
    for (const auto& expected : catalogue()) {
        const RadioStation station = expected.station;
        EXPECT_EQ(station.rawValue(), QString::fromUtf8(expected.rawValue));
        EXPECT_EQ(station.id(), station.rawValue());
        EXPECT_EQ(station.displayName(), QString::fromUtf8(expected.displayName));
        EXPECT_EQ(station.genre(), QString::fromUtf8(expected.genre));
        EXPECT_EQ(station.radioplayerId(), QString::fromUtf8(expected.radioplayerId));
    }
}

TEST(RadioStationTest, isFoundByExactlyItsRawValue) {
    for (const auto& expected : catalogue())
        EXPECT_EQ(RadioStation::fromRawValue(QString::fromUtf8(expected.rawValue)),
                  RadioStation(expected.station));
    for (const auto* text : {u"Zofra", u"JOE", u"", u"zofra ", u"zofraClassX", u"zofra_class"})
        EXPECT_EQ(RadioStation::fromRawValue(text), std::nullopt)
            << QStringView(text).toString().toStdString();
}

TEST(RadioStationTest, streamsFromItsHostAndPath) {
    const auto hosts = distinctHosts();
    for (const auto& expected : catalogue()) {
        const RadioStation station = expected.station;
        const auto name = QString::fromUtf8(expected.rawValue).replace(u'_', u'-');
        EXPECT_EQ(station.streamAAC(hosts).toString(), QStringLiteral("https://") + name +
                                                           QStringLiteral("-a.test:8443") +
                                                           QString::fromUtf8(expected.pathAAC));
        EXPECT_EQ(station.streamMP3(hosts).toString(), QStringLiteral("https://") + name +
                                                           QStringLiteral("-m.test") +
                                                           QString::fromUtf8(expected.pathMP3));
    }
}

TEST(RadioStationTest, sendsSpeakersToTheFallbackHostExceptInsideRadio) {
    const auto hosts = distinctHosts();
    for (const auto& expected : catalogue()) {
        const RadioStation station = expected.station;
        const auto name = QString::fromUtf8(expected.rawValue).replace(u'_', u'-');
        const auto host =
            name + (expected.station == RadioStation::insideRadio ? QStringLiteral("-a.test:8443")
                                                                  : QStringLiteral("-m.test"));
        EXPECT_EQ(station.networkPlayerStreamURI(hosts),
                  QStringLiteral("x-rincon-mp3radio://") + host + QString::fromUtf8(expected.pathMP3));
    }
}

TEST(RadioStationTest, streamsTheSameTwiceWhereThereIsNoSecondStream) {
    const ServiceHosts hosts;
    QStringList same;
    for (const RadioStation station : RadioStation::allCases) {
        EXPECT_TRUE(station.streamAAC(hosts).isValid());
        EXPECT_EQ(station.streamAAC(hosts).scheme(), QStringLiteral("https"));
        if (station.streamAAC(hosts) == station.streamMP3(hosts))
            same += station.rawValue();
    }
    EXPECT_EQ(same, (QStringList{QStringLiteral("radio_contact"), QStringLiteral("sud_radio_belgique"),
                                 QStringLiteral("sud_radio_hainaut")}));
}

TEST(RadioStationTest, keepsAPortAndABracketedAddress) {
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("e.ini")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[streams]\nzofra_aac=[fd00::1]:8443\nzofra_mp3=[fd00::1]:8444\n");
    file.close();
    ServiceHosts hosts;
    ASSERT_TRUE(hosts.overlay(file.fileName(), ServiceHosts::MissingFile::isRefused));
    EXPECT_EQ(RadioStation(RadioStation::zofra).streamAAC(hosts).toString(),
              QStringLiteral("https://[fd00::1]:8443/zofra.aac"));
    EXPECT_EQ(RadioStation(RadioStation::zofra).networkPlayerStreamURI(hosts),
              QStringLiteral("x-rincon-mp3radio://[fd00::1]:8444/zofra.mp3"));
}

TEST(RadioStationTest, hasALiveFeedAndAScraperPageForTheFirstFour) {
    EXPECT_EQ(RadioStation(RadioStation::zofra).liveSocketId(), QStringLiteral("zofra_be"));
    EXPECT_EQ(RadioStation(RadioStation::qmusic).liveSocketId(), QStringLiteral("qmusic_be"));
    EXPECT_EQ(RadioStation(RadioStation::joe).liveSocketId(), QStringLiteral("joe_fm"));
    EXPECT_EQ(RadioStation(RadioStation::zofraClassX).liveSocketId(), QStringLiteral("zofra_be_class_x"));
    EXPECT_EQ(RadioStation(RadioStation::zofra).scraperPath(), QStringLiteral("/be.zofra"));
    EXPECT_EQ(RadioStation(RadioStation::qmusic).scraperPath(), QStringLiteral("/be.qmusic"));
    EXPECT_EQ(RadioStation(RadioStation::joe).scraperPath(), QStringLiteral("/be.joe"));
    EXPECT_EQ(RadioStation(RadioStation::zofraClassX).scraperPath(), QStringLiteral("/be.zofraclassx"));
    for (std::size_t i = 4; i < RadioStation::allCases.size(); ++i) {
        EXPECT_EQ(RadioStation(RadioStation::allCases[i]).liveSocketId(), std::nullopt) << i;
        EXPECT_EQ(RadioStation(RadioStation::allCases[i]).scraperPath(), std::nullopt) << i;
    }
}

TEST(RadioStationTest, isEncodedAsItsRawValue) {
    QJsonArray list;
    for (const RadioStation station : RadioStation::allCases) {
        list.append(station.toJson());
        EXPECT_EQ(RadioStation::fromJson(station.toJson()), station);
    }
    EXPECT_TRUE(QJsonDocument(list).toJson(QJsonDocument::Compact).startsWith(R"(["zofra","qmusic","joe",)"));
    for (const auto& value :
         {QJsonValue(QStringLiteral("Zofra")), QJsonValue(QStringLiteral("")), QJsonValue(0), QJsonValue(),
          QJsonValue(true), QJsonValue(QJsonArray{QStringLiteral("zofra")})})
        EXPECT_EQ(RadioStation::fromJson(value), std::nullopt);
}

TEST(RadioStationTest, isHashedByRawValue) {
    QSet<RadioStation> set;
    for (const RadioStation station : RadioStation::allCases) {
        set.insert(station);
        set.insert(station);
        EXPECT_EQ(qHash(station, 7), qHash(station.rawValue(), 7));
    }
    EXPECT_EQ(set.size(), 9);
}

class SavedStationTest : public testing::Test {
protected:
    const QString key = QStringLiteral("zofra_selected_station");
    test::FakeDefaultsStore defaults;
};

TEST_F(SavedStationTest, isZofraAtFirst) {
    EXPECT_EQ(RadioStation::savedStation(defaults), RadioStation::zofra);
}

TEST_F(SavedStationTest, isZofraForAnUnknownText) {
    for (const auto* text : {u"Zofra", u"JOE", u"", u"5", u"sud_radio"}) {
        defaults.values[key] = QStringView(text).toString();
        EXPECT_EQ(RadioStation::savedStation(defaults), RadioStation::zofra);
    }
}

TEST_F(SavedStationTest, isWrittenAsTextAndReadBack) {
    RadioStation::setSavedStation(defaults, RadioStation::sudRadioHainaut);
    EXPECT_EQ(defaults.values[key], QVariant(QStringLiteral("sud_radio_hainaut")));
    EXPECT_EQ(RadioStation::savedStation(defaults), RadioStation::sudRadioHainaut);
    for (const RadioStation station : RadioStation::allCases) {
        RadioStation::setSavedStation(defaults, station);
        EXPECT_EQ(RadioStation::savedStation(defaults), station);
    }
}

} // namespace
} // namespace zofra
