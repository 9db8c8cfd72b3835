// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SonosSpeaker.h"

#include "speakers/PlainOrder.h"
#include "speakers/PlayerAddress.h"
#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <QSet>

#include <gtest/gtest.h>

namespace zofra {
namespace {

using test::otherPlayer;

const QString fallback = QStringLiteral("/MediaRenderer/AVTransport/Control");

TEST(SonosSpeakerTest, WithoutDescriptionURLIsDescribedAtTheUsualAddress) {
    const auto speaker = otherPlayer(QStringLiteral("A"), QStringLiteral("Kitchen"), 5);
    EXPECT_EQ(speaker.deviceDescriptionURL().toString(),
              QStringLiteral("http://10.0.0.5:1400/xml/device_description.xml"));
}

TEST(SonosSpeakerTest, WithDescriptionURLIsDescribedThere) {
    auto speaker = otherPlayer(QStringLiteral("A"), QStringLiteral("Kitchen"));
    speaker.descriptionURL = QUrl(QStringLiteral("https://10.9.9.9:1443/d.xml"));
    EXPECT_EQ(speaker.deviceDescriptionURL(), *speaker.descriptionURL);
}

TEST(SonosSpeakerTest, AnIPv6AddressIsAHost) {
    auto speaker = otherPlayer(QStringLiteral("A"), QStringLiteral("Kitchen"));
    speaker.ip = QStringLiteral("fe80::1");
    EXPECT_EQ(speaker.deviceDescriptionURL().toString(),
              QStringLiteral("http://[fe80::1]:1400/xml/device_description.xml"));
}

TEST(SonosSpeakerDeathTest, AnAddressThatIsNoHostIsAProgrammingError) {
    auto speaker = otherPlayer(QStringLiteral("A"), QStringLiteral("Kitchen"));
    speaker.ip = QStringLiteral("not a host");
    EXPECT_DEATH((void)speaker.deviceDescriptionURL(), "no host name");
}

QString endpointOf(const std::optional<QString>& path) {
    auto speaker = otherPlayer(QStringLiteral("A"), QStringLiteral("Kitchen"));
    speaker.descriptionURL = test::descriptionUrl(5);
    return speaker.endpoint(path, fallback).toString();
}

TEST(SonosSpeakerEndpointTest, ResolvesAPathFromTheRoot) {
    EXPECT_EQ(endpointOf(QStringLiteral("/MediaRenderer/AVTransport/Control")),
              QStringLiteral("http://10.0.0.5:1400/MediaRenderer/AVTransport/Control"));
}

TEST(SonosSpeakerEndpointTest, ResolvesAPathBesideTheDescription) {
    EXPECT_EQ(endpointOf(QStringLiteral("control")), QStringLiteral("http://10.0.0.5:1400/xml/control"));
}

TEST(SonosSpeakerEndpointTest, TakesAnAbsoluteHttpAddressAsItIs) {
    EXPECT_EQ(endpointOf(QStringLiteral("https://10.0.0.9:1443/c")),
              QStringLiteral("https://10.0.0.9:1443/c"));
}

TEST(SonosSpeakerEndpointTest, FallsBackWithoutAPath) {
    EXPECT_EQ(endpointOf(std::nullopt),
              QStringLiteral("http://10.0.0.5:1400/MediaRenderer/AVTransport/Control"));
}

TEST(SonosSpeakerEndpointTest, FallsBackOnAnotherScheme) {
    const auto expected = QStringLiteral("http://10.0.0.5:1400/MediaRenderer/AVTransport/Control");
    EXPECT_EQ(endpointOf(QStringLiteral("ftp://10.0.0.5/c")), expected);
    EXPECT_EQ(endpointOf(QStringLiteral("HTTP://10.0.0.5/c")), expected) << "schemes compare with their case";
    EXPECT_EQ(endpointOf(QStringLiteral("file:///etc/passwd")), expected);
    EXPECT_EQ(endpointOf(QStringLiteral("http:///c")), expected) << "no host";
}

TEST(SonosSpeakerEndpointTest, FallsBackOnWhatIsNoReference) {
    const auto expected = QStringLiteral("http://10.0.0.5:1400/MediaRenderer/AVTransport/Control");
    EXPECT_EQ(endpointOf(QStringLiteral("http://[::1/c")), expected);
    EXPECT_EQ(endpointOf(QString()), expected);
}

TEST(SonosSpeakerIsZofraTest, ByManufacturerInAnyCaseWhateverTheModel) {
    auto speaker = otherPlayer(QStringLiteral("A"), QStringLiteral("Kitchen"));
    speaker.model = QStringLiteral("Sonos");
    speaker.manufacturer = QStringLiteral("zOFRA zofra");
    EXPECT_TRUE(speaker.isZofra());
}

TEST(SonosSpeakerIsZofraTest, NotByTheBeginningOfTheManufacturer) {
    auto speaker = otherPlayer(QStringLiteral("A"), QStringLiteral("Kitchen"));
    speaker.manufacturer = QStringLiteral("Zofra Zofra Ltd");
    EXPECT_FALSE(speaker.isZofra());
}

TEST(SonosSpeakerIsZofraTest, ByModelNameOrModel) {
    auto speaker = otherPlayer(QStringLiteral("A"), QStringLiteral("Kitchen"));
    speaker.manufacturer = std::nullopt;
    speaker.modelName = QStringLiteral("ZOFRA PI PLAYER");
    EXPECT_TRUE(speaker.isZofra());
    speaker.modelName = std::nullopt;
    EXPECT_FALSE(speaker.isZofra());
    speaker.model = QStringLiteral("zofra pi player");
    EXPECT_TRUE(speaker.isZofra());
    speaker.model = QStringLiteral("Zofra Zofra");
    EXPECT_FALSE(speaker.isZofra()) << "that is a manufacturer, not a model";
}

TEST(SonosSpeakerTest, EveryFieldCountsForEqualityAndHash) {
    SonosSpeaker whole;
    whole.id = whole.ip = whole.roomName = whole.model = QStringLiteral("x");
    whole.groupCoordinatorId = whole.manufacturer = whole.modelName = QStringLiteral("x");
    whole.descriptionURL = QUrl(QStringLiteral("http://x/"));
    whole.transportPath = whole.renderingPath = whole.topologyPath = QStringLiteral("x");
    QList<SonosSpeaker> variants(14, whole);
    variants[0].id = QStringLiteral("y");
    variants[1].ip = QStringLiteral("y");
    variants[2].roomName = QStringLiteral("y");
    variants[3].model = QStringLiteral("y");
    variants[4].isCoordinator = !whole.isCoordinator;
    variants[5].isSub = !whole.isSub;
    variants[6].isVisible = !whole.isVisible;
    variants[7].groupCoordinatorId = std::nullopt;
    variants[8].manufacturer = std::nullopt;
    variants[9].modelName = std::nullopt;
    variants[10].descriptionURL = std::nullopt;
    variants[11].transportPath = std::nullopt;
    variants[12].renderingPath = std::nullopt;
    variants[13].topologyPath = std::nullopt;
    QSet<SonosSpeaker> all{whole, SonosSpeaker(whole)};
    EXPECT_EQ(all.size(), 1);
    for (const auto& variant : variants) {
        EXPECT_NE(variant, whole);
        EXPECT_NE(qHash(variant), qHash(whole));
        all.insert(variant);
    }
    EXPECT_EQ(all.size(), 15);
}

TEST(SonosSpeakerTest, AnAbsentTextIsNotAnEmptyOne) {
    auto a = otherPlayer(QStringLiteral("A"), QStringLiteral("Kitchen"));
    auto b = a;
    b.transportPath = QString();
    EXPECT_NE(a, b);
    EXPECT_NE(qHash(a), qHash(b));
}

TEST(PlainOrderTest, IsByCodePointAndCase) {
    EXPECT_TRUE(plainlyBefore(u"A", u"a"));
    EXPECT_TRUE(plainlyBefore(u"Z", u"a"));
    EXPECT_FALSE(plainlyBefore(u"a", u"a"));
    EXPECT_TRUE(plainlyBefore(u"a", u"aa"));
    EXPECT_TRUE(plainlyBefore(u"z", u"é"));
    // Code units alone would put the astral character first.
    EXPECT_TRUE(plainlyBefore(u"\uFF5E", u"\U0001F600"));
    EXPECT_FALSE(plainlyBefore(u"\U0001F600", u"\uFF5E"));
}

TEST(SpeakerOrderTest, IsById) {
    const auto kitchen = QStringLiteral("Kitchen");
    EXPECT_TRUE(
        comesBefore(otherPlayer(QStringLiteral("B"), kitchen), otherPlayer(QStringLiteral("a"), kitchen)));
}

TEST(PlayerAddressTest, TakesHttpAndHttpsWithAHost) {
    EXPECT_TRUE(playerAddress(QStringLiteral("http://10.0.0.5:1400/x")));
    EXPECT_TRUE(playerAddress(QStringLiteral("https://player.local/")));
    EXPECT_EQ(playerAddress(QStringLiteral("http://[fe80::1]:1400/x"))->host(), QStringLiteral("fe80::1"));
}

TEST(PlayerAddressTest, RefusesEverythingElse) {
    for (const auto* text : {"", "http:", "http://", "http:///x", "HTTP://10.0.0.5/", "Https://10.0.0.5/",
                             "ftp://h/", "10.0.0.5:1400/x", "//10.0.0.5/x", "http://a b/", "http://[::1/",
                             "http://10.0.0.5:99999/", "http://%00/", "javascript:alert(1)", "httpx://h/"})
        EXPECT_FALSE(playerAddress(QString::fromLatin1(text))) << text;
}

TEST(PlayerAddressTest, SurvivesStrangeHosts) {
    for (const auto* text : {"http://xn--/", "http://%66oo/", "http://[v1.x]/", "http://ex%C3%A4mple/",
                             "http://0x7f.1/", "http://[fe80::1%25eth0]/", "http://\xC3\xA4.example/"}) {
        const auto url = playerAddress(QString::fromUtf8(text));
        EXPECT_TRUE(!url || !url->host().isEmpty()) << text;
    }
}

TEST(PlayerAddressTest, SeesUserInfoEvenWhenEmpty) {
    EXPECT_TRUE(carriesUserInfo(QStringLiteral("http://me@h/")));
    EXPECT_TRUE(carriesUserInfo(QStringLiteral("http://me:secret@h/")));
    EXPECT_TRUE(carriesUserInfo(QStringLiteral("http://@h/")));
    EXPECT_FALSE(carriesUserInfo(QStringLiteral("http://h/a@b")));
    EXPECT_FALSE(carriesUserInfo(QStringLiteral("http://h?a@b")));
    EXPECT_FALSE(carriesUserInfo(QStringLiteral("h@b")));
}

} // namespace
} // namespace zofra
