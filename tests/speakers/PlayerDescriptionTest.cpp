// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/NetworkPlayerProtocol.h"
#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

const QString typeElement =
    QStringLiteral("<deviceType>urn:schemas-upnp-org:device:ZonePlayer:1</deviceType>");

std::optional<SonosSpeaker> read(const QString& deviceContents) {
    return NetworkPlayerProtocol::speaker(QStringLiteral("<root><device>") + deviceContents +
                                              QStringLiteral("</device></root>"),
                                          test::descriptionUrl(5));
}

std::optional<SonosSpeaker> readPlayer(const QString& more) {
    return read(typeElement + QStringLiteral("<UDN>uuid:A</UDN>") + more);
}

QString service(const QString& type, const QString& control) {
    return QStringLiteral("<service><serviceType>urn:schemas-upnp-org:service:%1</serviceType>"
                          "<controlURL>%2</controlURL></service>")
        .arg(type, control);
}

TEST(PlayerDescriptionTest, GivesAVisibleCoordinatorOfItsOwn) {
    const auto speaker =
        readPlayer(QStringLiteral("<roomName> Kitchen\n</roomName><modelName> Sonos One </modelName>"
                                  "<manufacturer> Sonos, Inc. </manufacturer>"));
    SonosSpeaker expected;
    expected.id = QStringLiteral("A");
    expected.ip = QStringLiteral("10.0.0.5");
    expected.roomName = QStringLiteral("Kitchen");
    expected.model = QStringLiteral("Sonos One");
    expected.modelName = expected.model;
    expected.manufacturer = QStringLiteral("Sonos, Inc.");
    expected.descriptionURL = test::descriptionUrl(5);
    EXPECT_EQ(speaker, expected);
    EXPECT_TRUE(expected.isCoordinator && expected.isVisible && !expected.isSub);
}

TEST(PlayerDescriptionTest, OfAnythingElseIsNothing) {
    const auto url = test::descriptionUrl(5);
    const QString udn = QStringLiteral("<UDN>uuid:A</UDN>");
    EXPECT_FALSE(NetworkPlayerProtocol::speaker(QString(), url));
    EXPECT_FALSE(NetworkPlayerProtocol::speaker(QStringLiteral("<html>403 Forbidden"), url));
    EXPECT_FALSE(NetworkPlayerProtocol::speaker(QStringLiteral("<root/>"), url)) << "no device";
    EXPECT_FALSE(read(udn)) << "no type";
    EXPECT_FALSE(
        read(udn + QStringLiteral("<deviceType>urn:schemas-upnp-org:device:ZonePlayer:2</deviceType>")));
    EXPECT_FALSE(
        read(udn + QStringLiteral("<deviceType>urn:schemas-upnp-org:device:zoneplayer:1</deviceType>")));
    EXPECT_FALSE(NetworkPlayerProtocol::speaker(test::description(QStringLiteral("A"), QStringLiteral("K")),
                                                QUrl(QStringLiteral("file:///d.xml"))))
        << "no host";
    EXPECT_FALSE(NetworkPlayerProtocol::speaker(
        QStringLiteral("<!DOCTYPE root>") + test::description(QStringLiteral("A"), QStringLiteral("K")),
        url));
}

TEST(PlayerDescriptionTest, TheTypeIsTrimmed) {
    EXPECT_TRUE(read(QStringLiteral("<deviceType>\n urn:schemas-upnp-org:device:ZonePlayer:1\t</deviceType>"
                                    "<UDN> uuid:A </UDN>")));
}

TEST(PlayerDescriptionTest, TheDeviceIsTheRootsOwnChild) {
    EXPECT_FALSE(NetworkPlayerProtocol::speaker(QStringLiteral("<root><x><device>") + typeElement +
                                                    QStringLiteral("<UDN>uuid:A</UDN></device></x></root>"),
                                                test::descriptionUrl(5)));
}

TEST(PlayerDescriptionTest, TheUdnNeedsItsPrefixAndOneCharacter) {
    EXPECT_FALSE(read(typeElement)) << "none";
    EXPECT_FALSE(read(typeElement + QStringLiteral("<UDN>uuid:</UDN>"))) << "too short";
    EXPECT_FALSE(read(typeElement + QStringLiteral("<UDN>UUID:A</UDN>"))) << "wrong case";
    EXPECT_FALSE(read(typeElement + QStringLiteral("<UDN>RINCON_1</UDN>"))) << "no prefix";
    EXPECT_EQ(readPlayer(QString())->id, QStringLiteral("A"));
}

TEST(PlayerDescriptionTest, TheModelHasFallbacks) {
    EXPECT_EQ(readPlayer(QString())->model, QStringLiteral("Sonos"));
    EXPECT_EQ(readPlayer(QString())->modelName, QStringLiteral("Sonos"));
    const auto described = QStringLiteral("<modelDescription> Described </modelDescription>");
    EXPECT_EQ(readPlayer(described)->model, QStringLiteral("Described"));
    EXPECT_EQ(readPlayer(described + QStringLiteral("<modelName>Named</modelName>"))->model,
              QStringLiteral("Named"));
    EXPECT_EQ(readPlayer(described + QStringLiteral("<modelName/>"))->model, QString())
        << "present but empty";
}

TEST(PlayerDescriptionTest, TheRoomNameHasFallbacks) {
    EXPECT_EQ(readPlayer(QString())->roomName, QStringLiteral("Sonos"));
    const auto friendly = QStringLiteral("<friendlyName> Friend </friendlyName>");
    EXPECT_EQ(readPlayer(friendly)->roomName, QStringLiteral("Friend"));
    EXPECT_EQ(readPlayer(friendly + QStringLiteral("<roomName>Room</roomName>"))->roomName,
              QStringLiteral("Room"));
    EXPECT_EQ(readPlayer(friendly + QStringLiteral("<roomName> </roomName>"))->roomName, QString());
}

TEST(PlayerDescriptionTest, TheManufacturerMayBeAbsent) {
    EXPECT_FALSE(readPlayer(QString())->manufacturer);
    EXPECT_EQ(readPlayer(QStringLiteral("<manufacturer/>"))->manufacturer, QString());
}

TEST(PlayerDescriptionTest, ServicesOfEmbeddedDevicesCount) {
    const auto speaker = readPlayer(QStringLiteral("<serviceList>") +
                                    service(QStringLiteral("ZoneGroupTopology:1"), QStringLiteral(" /zgt ")) +
                                    QStringLiteral("</serviceList><deviceList><device><serviceList>") +
                                    service(QStringLiteral("AVTransport:1"), QStringLiteral("/avt")) +
                                    service(QStringLiteral("RenderingControl:1"), QStringLiteral("/rc")) +
                                    QStringLiteral("</serviceList></device></deviceList>"));
    EXPECT_EQ(speaker->transportPath, QStringLiteral("/avt"));
    EXPECT_EQ(speaker->renderingPath, QStringLiteral("/rc"));
    EXPECT_EQ(speaker->topologyPath, QStringLiteral("/zgt"));
}

TEST(PlayerDescriptionTest, ALaterServiceOfTheSameTypeReplacesAnEarlierOne) {
    const auto speaker = readPlayer(service(QStringLiteral("AVTransport:1"), QStringLiteral("/a")) +
                                    service(QStringLiteral("AVTransport:1"), QStringLiteral("/b")) +
                                    service(QStringLiteral("AVTransport:2"), QStringLiteral("/c")));
    EXPECT_EQ(speaker->transportPath, QStringLiteral("/b"));
}

TEST(PlayerDescriptionTest, ServicesLackingTypeOrControlAreSkipped) {
    const auto speaker = readPlayer(QStringLiteral(
        "<service><controlURL>/x</controlURL></service>"
        "<service><serviceType>urn:schemas-upnp-org:service:AVTransport:1</serviceType></service>"));
    EXPECT_FALSE(speaker->transportPath || speaker->renderingPath || speaker->topologyPath);
}

bool isSub(const QString& model, const QString& manufacturer = QStringLiteral("Sonos, Inc.")) {
    return readPlayer(QStringLiteral("<modelName>%1</modelName><manufacturer>%2</manufacturer>")
                          .arg(model, manufacturer))
        ->isSub;
}

TEST(PlayerDescriptionTest, SubAsAWordMakesASub) {
    EXPECT_TRUE(isSub(QStringLiteral("Sonos Sub Mini")));
    EXPECT_TRUE(isSub(QStringLiteral("SUB")));
    EXPECT_TRUE(isSub(QStringLiteral("Sonos-sub")));
    EXPECT_FALSE(isSub(QStringLiteral("Subwoofer")));
    EXPECT_FALSE(isSub(QStringLiteral("Sonos Sub2")));
    EXPECT_FALSE(isSub(QStringLiteral("ÜSub"))) << "letters beyond ASCII are letters";
    EXPECT_FALSE(isSub(QStringLiteral("Sonos One")));
}

TEST(PlayerDescriptionTest, OwnPlayersAreNeverSubs) {
    EXPECT_FALSE(isSub(QStringLiteral("Sub"), QStringLiteral("Zofra Zofra")));
    EXPECT_FALSE(isSub(QStringLiteral("Zofra Pi Player")));
}

TEST(PlayerDescriptionTest, TextsTooLongToBeKeptAreRefused) {
    const QString longest(1024, u'x');
    for (const auto* element : {"roomName", "modelName", "manufacturer"}) {
        const auto text = QStringLiteral("<%1>%2</%1>");
        EXPECT_TRUE(readPlayer(text.arg(QString::fromLatin1(element), longest))) << element;
        EXPECT_FALSE(readPlayer(text.arg(QString::fromLatin1(element), longest + u'x'))) << element;
    }
    for (const auto* type : {"AVTransport:1", "RenderingControl:1", "ZoneGroupTopology:1"})
        EXPECT_FALSE(readPlayer(service(QString::fromLatin1(type), longest + u'x'))) << type;
    EXPECT_FALSE(read(typeElement + QStringLiteral("<UDN>uuid:") + longest + QStringLiteral("x</UDN>")));
}

struct Captured {
    const char* file;
    const char* id;
    const char* roomName;
    const char* model;
};

class CapturedDescriptionTest : public testing::TestWithParam<Captured> {};

TEST_P(CapturedDescriptionTest, IsThePlayerOfItsFirstLevel) {
    const auto text =
        test::capture(QStringLiteral("device_description/") + QString::fromLatin1(GetParam().file));
    if (!text)
        GTEST_SKIP() << "skipped: no captures";
    const auto speaker = NetworkPlayerProtocol::speaker(*text, test::descriptionUrl(5));
    ASSERT_TRUE(speaker);
    EXPECT_EQ(speaker->id, QString::fromLatin1(GetParam().id));
    EXPECT_EQ(speaker->roomName, QString::fromLatin1(GetParam().roomName));
    EXPECT_EQ(speaker->model, QString::fromLatin1(GetParam().model));
    EXPECT_FALSE(speaker->isSub);
    EXPECT_FALSE(speaker->isZofra());
}

INSTANTIATE_TEST_SUITE_P(
    All, CapturedDescriptionTest,
    testing::Values(Captured{"bridge_fw28.xml", "RINCON_00CAFE901CDE01400", "BRIDGE", "Sonos BRIDGE"},
                    Captured{"minimal_player.xml", "RINCON_TEST123456", "Test Room", "Sonos One"},
                    Captured{"one_fw85.xml", "RINCON_00CAFE6C7A0401400", "Bedroom", "Sonos One"},
                    Captured{"play1_fw85.xml", "RINCON_00CAFE0CDBF701400", "Dining Room", "Sonos Play:1"},
                    Captured{"play3_fw28.xml", "RINCON_00CAFE528E3901400", "Chambre coline", "Sonos PLAY:3"},
                    Captured{"playbar_fw57_stray_tokens.xml", "RINCON_949F0000A901400", "TV",
                             "Sonos Playbar"},
                    Captured{"playbar_fw85.xml", "RINCON_00CAFE7847DB01400", "TV Room", "Sonos Playbar"}));

TEST(CapturedDescriptionsTest, HaveTheirControlAddresses) {
    const auto text = test::capture(QStringLiteral("device_description/play3_fw28.xml"));
    if (!text)
        GTEST_SKIP() << "skipped: no captures";
    const auto speaker = NetworkPlayerProtocol::speaker(*text, test::descriptionUrl(5));
    ASSERT_TRUE(speaker);
    EXPECT_EQ(speaker->transportPath, QStringLiteral("/MediaRenderer/AVTransport/Control"));
    EXPECT_EQ(speaker->renderingPath, QStringLiteral("/MediaRenderer/RenderingControl/Control"));
    EXPECT_EQ(speaker->topologyPath, QStringLiteral("/ZoneGroupTopology/Control"));
}

TEST(CapturedDescriptionsTest, ARouterIsNoPlayer) {
    const auto text = test::capture(QStringLiteral("device_description/router_not_a_player.xml"));
    if (!text)
        GTEST_SKIP() << "skipped: no captures";
    EXPECT_FALSE(NetworkPlayerProtocol::speaker(*text, test::descriptionUrl(5)));
}

} // namespace
} // namespace zofra
