// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SpeakerDiscovery.h"

#include "speakers/NetworkPlayerProtocol.h"
#include "tests/speakers/Background.h"
#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <net/if.h>

namespace zofra {
namespace {

using test::answered;
using test::Background;
using test::descriptionUrl;

const QString eth0 = QStringLiteral("eth0");
const QString localIp = QStringLiteral("10.0.0.2");
const QString broadcast = QStringLiteral("10.0.0.255");
const QString multicast = QStringLiteral("239.255.255.250");

QByteArray playerAnswer(int host) {
    return test::ssdpAnswer(descriptionUrl(host).toString());
}

class SpeakerDiscoveryTest : public testing::Test {
protected:
    SpeakerDiscoveryTest() {
        background.http.automatic = [this](const HttpRequest& request) { return respond(request); };
    }

    /// Players at the hosts of `players`; nobody anywhere else, and no topology.
    HttpResult respond(const HttpRequest& request) const {
        const auto host = request.url.host().section(u'.', 3).toInt();
        if (request.method == "POST")
            return answered(500);
        if (!players.contains(host))
            return test::failed(HttpError::Code::timedOut);
        const auto text = QString::number(host);
        return answered(200, test::description(text, QStringLiteral("Room ") + text));
    }

    void run(bool forceSubnetScan = false) {
        const auto before = background.found.size();
        runDiscovery(background.state, forceSubnetScan);
        background.queue.drain();
        if (background.found.size() > before)
            results.append(background.state->allSpeakers.value());
    }

    std::vector<QString> logged() const { return background.log.lines; }

    /// Hosts of the probes, which are known by their timeout.
    QList<int> probed() const {
        QList<int> hosts;
        for (const auto& request : background.http.requests) {
            if (request.timeout == std::chrono::milliseconds(1500))
                hosts.append(request.url.host().section(u'.', 3).toInt());
        }
        return hosts;
    }

    QStringList idsFound() const {
        QStringList ids;
        for (const auto& speaker : results.value(0))
            ids.append(speaker.id);
        return ids;
    }

    Background background;
    QList<int> players;
    QList<QList<SonosSpeaker>> results;
};

InterfaceAddress entry(unsigned int flags, std::optional<int> family = AF_INET) {
    return {eth0, family, flags, localIp, broadcast};
}

TEST(ActiveInterfacesTest, AreUpAndRunningAndNeitherLoopbackNorPointToPoint) {
    constexpr unsigned int good = IFF_UP | IFF_RUNNING;
    EXPECT_EQ(activeIPv4Interfaces({entry(good)}).size(), 1);
    EXPECT_EQ(activeIPv4Interfaces({entry(good | IFF_MULTICAST | IFF_PROMISC)}).size(), 1)
        << "the rest is not masked";
    for (const unsigned int flags : {0U, unsigned{IFF_UP}, unsigned{IFF_RUNNING}, good | IFF_LOOPBACK,
                                     good | IFF_POINTOPOINT, good | IFF_LOOPBACK | IFF_POINTOPOINT})
        EXPECT_TRUE(activeIPv4Interfaces({entry(flags)}).isEmpty()) << flags;
    EXPECT_TRUE(activeIPv4Interfaces({entry(good, AF_INET6)}).isEmpty());
    EXPECT_TRUE(activeIPv4Interfaces({entry(good, std::nullopt)}).isEmpty());
    EXPECT_TRUE(activeIPv4Interfaces({}).isEmpty());
}

TEST(ActiveInterfacesTest, HaveABroadcastAddressOnlyWithTheFlag) {
    constexpr unsigned int good = IFF_UP | IFF_RUNNING;
    EXPECT_EQ(activeIPv4Interfaces({entry(good | IFF_BROADCAST)}),
              (QList<InterfaceInfo>{{eth0, localIp, broadcast}}));
    EXPECT_EQ(activeIPv4Interfaces({entry(good)}), (QList<InterfaceInfo>{{eth0, localIp, std::nullopt}}));
    auto none = entry(good | IFF_BROADCAST);
    none.broadcast = std::nullopt;
    EXPECT_FALSE(activeIPv4Interfaces({none}).first().broadcast);
}

TEST(ActiveInterfacesTest, AreOneRecordPerAddressInTheSystemsOrderWhateverTheName) {
    constexpr unsigned int good = IFF_UP | IFF_RUNNING;
    auto second = entry(good);
    second.ip = QStringLiteral("10.0.1.2");
    auto docker = entry(good);
    docker.name = QStringLiteral("docker0");
    const auto interfaces = activeIPv4Interfaces({second, entry(good), docker});
    ASSERT_EQ(interfaces.size(), 3);
    EXPECT_EQ(interfaces[0].ip, QStringLiteral("10.0.1.2"));
    EXPECT_EQ(interfaces[1].ip, localIp);
    EXPECT_EQ(interfaces[2].name, QStringLiteral("docker0"));
}

TEST(InterfaceInfoTest, ReachesTheAddressesOfItsNetwork) {
    InterfaceInfo interface { eth0, QStringLiteral("10.1.2.3"), std::nullopt, 22 };
    for (const auto* host : {"10.1.0.0", "10.1.3.255", "10.1.2.3"})
        EXPECT_TRUE(interface.reaches(QLatin1String(host))) << host;
    for (const auto* host : {"10.1.4.0", "10.0.255.255", "fd00::1", "10.1.2", "10.1.2.3.4", "player.local",
                             "", "10.1.2.3000", "10.1..3", "10.1.2.-3", "10.1.2.258"})
        EXPECT_FALSE(interface.reaches(QLatin1String(host))) << host;
    interface.prefixLength = 32;
    EXPECT_FALSE(interface.reaches(QStringLiteral("10.1.2.2")));
    interface.prefixLength = 0;
    EXPECT_TRUE(interface.reaches(QStringLiteral("192.0.2.1")));
}

TEST_F(SpeakerDiscoveryTest, SendsTheSearchToMulticastAndBroadcast) {
    background.network.addInterface(eth0, localIp, broadcast);
    run();
    const auto sent = background.network.sent();
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[0].address, multicast);
    EXPECT_EQ(sent[1].address, broadcast);
    const QByteArray datagram =
        "M-SEARCH * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nMAN: \"ssdp:discover\"\r\n"
        "MX: 1\r\nST: urn:schemas-upnp-org:device:ZonePlayer:1\r\n\r\n";
    EXPECT_EQ(datagram.size(), 126);
    for (const auto& one : sent) {
        EXPECT_EQ(one.fromIp, localIp);
        EXPECT_EQ(one.port, 1900);
        EXPECT_EQ(one.datagram, datagram);
    }
    EXPECT_EQ(background.network.openSockets(), 0);
}

TEST_F(SpeakerDiscoveryTest, LogsAttemptsAnswersAndAddresses) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].datagrams = {playerAnswer(9), playerAnswer(10), "nonsense"};
    players = {9, 10};
    run();
    EXPECT_EQ(logged(),
              (std::vector<QString>{
                  QStringLiteral("[Sonos] eth0: 2 Sendeversuche, 0 davon blockiert (letzter errno 0)"),
                  QStringLiteral("[Sonos] eth0: 2 SSDP-Antworten"),
                  QStringLiteral(
                      "[Sonos] SSDP-Beschreibungen: [\"http://10.0.0.10:1400/xml/device_description.xml\", "
                      "\"http://10.0.0.9:1400/xml/device_description.xml\"]")}));
    EXPECT_EQ(idsFound(), (QStringList{QStringLiteral("10"), QStringLiteral("9")}));
}

TEST_F(SpeakerDiscoveryTest, WithoutABroadcastAddressSendsOnceAndNeverScans) {
    background.network.addInterface(eth0, localIp, QString());
    run(true);
    ASSERT_EQ(background.network.sent().size(), 1U);
    EXPECT_EQ(background.network.sent()[0].address, multicast);
    EXPECT_EQ(logged()[0],
              QStringLiteral("[Sonos] eth0: 1 Sendeversuche, 0 davon blockiert (letzter errno 0)"));
    EXPECT_TRUE(probed().isEmpty());
}

TEST_F(SpeakerDiscoveryTest, TheReceiveWindowIsTwoAndAHalfSeconds) {
    background.network.addInterface(eth0, localIp, broadcast);
    run();
    EXPECT_EQ(background.network.receives(), 10) << "of a quarter of a second each";
}

TEST_F(SpeakerDiscoveryTest, TheReceiveWindowIsNotOvershotByAReceiveThatBeginsLate) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].quietTime = std::chrono::milliseconds(240);
    run();
    EXPECT_EQ(background.network.receives(), 11);
    EXPECT_EQ(background.network.waited(), std::chrono::milliseconds(2500));
}

TEST_F(SpeakerDiscoveryTest, AllSendsBlockedIsADenialAndNothingIsReceived) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].sendErrno = {{multicast, EHOSTUNREACH}, {broadcast, EHOSTUNREACH}};
    run();
    EXPECT_EQ(logged()[0],
              QStringLiteral("[Sonos] eth0: 2 Sendeversuche, 2 davon blockiert (letzter errno %1)")
                  .arg(EHOSTUNREACH));
    EXPECT_EQ(logged()[1], QStringLiteral("[Sonos] SSDP-Beschreibungen: []")) << "no answers are counted";
    EXPECT_EQ(background.network.receives(), 0);
    EXPECT_EQ(background.network.openSockets(), 0);
    EXPECT_EQ(background.denials, QList<bool>{true});
}

TEST_F(SpeakerDiscoveryTest, TheLastBlockingErrnoIsKept) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].sendErrno = {{multicast, EPERM}, {broadcast, EACCES}};
    run();
    EXPECT_EQ(
        logged()[0],
        QStringLiteral("[Sonos] eth0: 2 Sendeversuche, 2 davon blockiert (letzter errno %1)").arg(EACCES));
}

TEST_F(SpeakerDiscoveryTest, OneSendThatIsNotBlockedIsNoDenial) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].sendErrno = {{multicast, EPERM}};
    run();
    EXPECT_EQ(
        logged()[0],
        QStringLiteral("[Sonos] eth0: 2 Sendeversuche, 1 davon blockiert (letzter errno %1)").arg(EPERM));
    EXPECT_GT(background.network.receives(), 0);
    EXPECT_TRUE(background.denials.isEmpty());
}

TEST_F(SpeakerDiscoveryTest, OtherSendFailuresAreAttemptsButNotBlocked) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].sendErrno = {{multicast, ENETUNREACH}, {broadcast, ENOBUFS}};
    run();
    EXPECT_EQ(logged()[0],
              QStringLiteral("[Sonos] eth0: 2 Sendeversuche, 0 davon blockiert (letzter errno 0)"));
    EXPECT_EQ(logged()[1], QStringLiteral("[Sonos] eth0: 0 SSDP-Antworten"));
    EXPECT_TRUE(background.denials.isEmpty());
}

TEST_F(SpeakerDiscoveryTest, ASocketThatCannotBeMadeMakesASilentInterface) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].opens = false;
    players = {7};
    run();
    EXPECT_EQ(logged(), std::vector<QString>{QStringLiteral("[Sonos] SSDP-Beschreibungen: []")});
    EXPECT_EQ(probed().size(), 254);
    EXPECT_EQ(idsFound(), QStringList{QStringLiteral("7")});
}

TEST_F(SpeakerDiscoveryTest, InterfacesNamesAreData) {
    background.network.addInterface(QStringLiteral("%1%2"), localIp, QString());
    run();
    EXPECT_EQ(logged()[0],
              QStringLiteral("[Sonos] %1%2: 1 Sendeversuche, 0 davon blockiert (letzter errno 0)"));
}

TEST_F(SpeakerDiscoveryTest, AnswersWithOneAddressMerge) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].datagrams = {playerAnswer(9), playerAnswer(9), playerAnswer(9)};
    players = {9};
    run();
    EXPECT_EQ(logged()[1], QStringLiteral("[Sonos] eth0: 1 SSDP-Antworten"));
    EXPECT_EQ(background.http.requests.size(), 2U) << "a description and a topology";
}

TEST_F(SpeakerDiscoveryTest, AnswersMayBeNoText) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].datagrams = {QByteArray(4096, '\xFF'), QByteArray(), playerAnswer(9)};
    players = {9};
    run();
    EXPECT_EQ(logged()[1], QStringLiteral("[Sonos] eth0: 1 SSDP-Antworten"));
}

TEST_F(SpeakerDiscoveryTest, ASilentInterfaceIsScannedFrom1To254) {
    background.network.addInterface(eth0, QStringLiteral("10.0.0.77"), broadcast);
    players = {1, 77, 254};
    run();
    QList<int> all;
    for (int host = 1; host <= 254; ++host)
        all.append(host);
    EXPECT_EQ(probed(), all) << "in order, without 0 and 255, with the machine's own";
    EXPECT_EQ(idsFound(), (QStringList{QStringLiteral("1"), QStringLiteral("254"), QStringLiteral("77")}));
}

TEST_F(SpeakerDiscoveryTest, AProbeIsAPlainGetOfTheDescription) {
    background.network.addInterface(eth0, localIp, broadcast);
    run();
    const auto& probe = background.http.requests.front();
    EXPECT_EQ(probe.method, "GET");
    EXPECT_EQ(probe.url, descriptionUrl(1));
    EXPECT_EQ(probe.timeout, std::chrono::milliseconds(1500));
    EXPECT_EQ(probe.maxBodyBytes, 256U * 1024U);
    EXPECT_EQ(probe.route, HttpRequest::Route::direct);
    EXPECT_EQ(probe.cachePolicy, HttpRequest::CachePolicy::useProtocol);
    EXPECT_TRUE(probe.headers.empty());
}

TEST_F(SpeakerDiscoveryTest, AProbeNeedsStatus200AndAPlayer) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.http.automatic = [](const HttpRequest& request) {
        const auto host = request.url.host().section(u'.', 3).toInt();
        const auto text = test::description(QString::number(host), QStringLiteral("Room"));
        switch (host) {
        case 3:
            return answered(200, text);
        case 4:
            return answered(404, text);
        case 5:
            return answered(200, QStringLiteral("<html>a router</html>"));
        case 6:
            return answered(204, text);
        default:
            return test::failed(HttpError::Code::cannotConnect);
        }
    };
    run();
    EXPECT_EQ(idsFound(), QStringList{QStringLiteral("3")});
    // Nobody else is asked for a description once more.
    std::vector<QString> askedAgain;
    for (const auto& request : background.http.requests) {
        if (request.method == "GET" && request.timeout == std::chrono::milliseconds(3000))
            askedAgain.push_back(request.url.host());
    }
    EXPECT_EQ(askedAgain, std::vector<QString>{QStringLiteral("10.0.0.3")});
}

TEST_F(SpeakerDiscoveryTest, ProbesDoNotTestForDenial) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.http.automatic = [](const HttpRequest&) {
        return test::failed(HttpError::Code::notConnected);
    };
    run();
    EXPECT_EQ(probed().size(), 254);
    EXPECT_TRUE(background.denials.isEmpty());
}

TEST_F(SpeakerDiscoveryTest, AnInterfaceThatGotAnAnswerIsScannedOnlyWhenForced) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].datagrams = {playerAnswer(9)};
    players = {9, 11};
    run(false);
    EXPECT_TRUE(probed().isEmpty());
    EXPECT_EQ(idsFound(), QStringList{QStringLiteral("9")});
    results.clear();
    run(true);
    EXPECT_EQ(probed().size(), 254);
    EXPECT_EQ(idsFound(), (QStringList{QStringLiteral("11"), QStringLiteral("9")}));
}

TEST_F(SpeakerDiscoveryTest, OnlySilentInterfacesAreScanned) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.addInterface(QStringLiteral("wlan0"), QStringLiteral("10.0.1.2"),
                                    QStringLiteral("10.0.1.255"));
    background.network.scripts[localIp].datagrams = {playerAnswer(9)};
    run();
    ASSERT_FALSE(background.http.requests.empty());
    EXPECT_EQ(background.http.requests.front().url.host(), QStringLiteral("10.0.1.1"));
    EXPECT_EQ(probed().size(), 254);
}

TEST_F(SpeakerDiscoveryTest, EachInterfaceIsSearchedByItself) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.addInterface(QStringLiteral("wlan0"), QStringLiteral("10.0.1.2"), QString());
    background.network.scripts[localIp].datagrams = {playerAnswer(9)};
    background.network.scripts[QStringLiteral("10.0.1.2")].datagrams = {playerAnswer(9), playerAnswer(10)};
    players = {9, 10};
    run();
    EXPECT_EQ(background.network.opened(), (std::vector<QString>{localIp, QStringLiteral("10.0.1.2")}));
    EXPECT_EQ(logged()[3], QStringLiteral("[Sonos] wlan0: 2 SSDP-Antworten"));
    EXPECT_EQ(idsFound(), (QStringList{QStringLiteral("10"), QStringLiteral("9")}));
}

TEST_F(SpeakerDiscoveryTest, AnAddressThatIsNotOfFourPartsIsNotScanned) {
    for (const auto* ip : {"10.0.0", "10.0.0.0.1", "fe80::1", ""}) {
        const auto text = QString::fromLatin1(ip);
        background.network.addresses.clear();
        background.network.addInterface(eth0, text, broadcast);
        run(true);
        EXPECT_TRUE(probed().isEmpty()) << ip;
    }
}

TEST_F(SpeakerDiscoveryTest, WithoutAnyInterfaceOnlyKnownSpeakersAreReadAgain) {
    auto known = test::otherPlayer(QStringLiteral("8"), QStringLiteral("Old"), 8);
    background.state->allSpeakers.set({known});
    players = {8};
    run(true);
    EXPECT_EQ(logged(), std::vector<QString>{QStringLiteral("[Sonos] SSDP-Beschreibungen: []")});
    EXPECT_EQ(background.http.requests.front().url, descriptionUrl(8)) << "made from its address";
    ASSERT_EQ(idsFound(), QStringList{QStringLiteral("8")});
    EXPECT_EQ(results[0][0].roomName, QStringLiteral("Room 8"));
}

TEST_F(SpeakerDiscoveryTest, KnownSpeakersAreReadAgainWhereTheyWereFound) {
    auto known = test::otherPlayer(QStringLiteral("8"), QStringLiteral("Old"), 8);
    known.descriptionURL = QUrl(QStringLiteral("http://10.0.0.8:1401/d.xml"));
    background.state->allSpeakers.set({known});
    background.network.addInterface(eth0, localIp, QString());
    background.network.scripts[localIp].datagrams = {playerAnswer(9)};
    players = {8, 9};
    run();
    EXPECT_EQ(idsFound(), (QStringList{QStringLiteral("8"), QStringLiteral("9")}));
    EXPECT_TRUE(std::any_of(background.http.requests.begin(), background.http.requests.end(),
                            [&](const auto& r) { return r.url == *known.descriptionURL; }));
}

TEST_F(SpeakerDiscoveryTest, NothingFoundSaysSoAndHandsNothingOn) {
    background.network.addInterface(eth0, localIp, QString());
    background.network.scripts[localIp].datagrams = {playerAnswer(9)};
    run();
    EXPECT_EQ(logged().back(), QStringLiteral("[Sonos] Keine erreichbaren Netzwerk-Player gefunden."));
    EXPECT_TRUE(results.isEmpty());
    EXPECT_TRUE(background.denials.isEmpty()) << "the denial flag is left as it was";
}

TEST_F(SpeakerDiscoveryTest, ASuccessfulRunClearsTheDenial) {
    background.network.addInterface(eth0, localIp, QString());
    background.network.scripts[localIp].datagrams = {playerAnswer(9)};
    players = {9};
    run();
    EXPECT_EQ(background.denials, QList<bool>{false});
    EXPECT_EQ(results.size(), 1);
}

TEST_F(SpeakerDiscoveryTest, ADescriptionThatTheSystemRefusesIsADenial) {
    background.network.addInterface(eth0, localIp, QString());
    background.network.scripts[localIp].datagrams = {playerAnswer(9)};
    background.http.automatic = [](const HttpRequest&) {
        return test::failed(HttpError::Code::notConnected);
    };
    run();
    EXPECT_EQ(background.denials, QList<bool>{true});
}

TEST_F(SpeakerDiscoveryTest, AFloodOfInventedAddressesIsCutOff) {
    background.network.addInterface(eth0, localIp, QString());
    background.network.addInterface(QStringLiteral("wlan0"), QStringLiteral("10.0.1.2"), QString());
    auto known = test::otherPlayer(QStringLiteral("8"), QStringLiteral("Old"), 8);
    background.state->allSpeakers.set({known});
    for (int i = 0; i < 3000; ++i) {
        const auto text = QStringLiteral("http://10.9.%1.%2/").arg(i / 100).arg(100 + i % 100);
        background.network.scripts[localIp].datagrams.push_back(test::ssdpAnswer(text));
        background.network.scripts[QStringLiteral("10.0.1.2")].datagrams.push_back(
            test::ssdpAnswer(text + QStringLiteral("x")));
    }
    players = {8};
    run();
    EXPECT_EQ(background.http.requests.size(), 1025U) << "1024 descriptions, one topology";
    EXPECT_EQ(idsFound(), QStringList{QStringLiteral("8")}) << "who was known is not crowded out";
}

TEST_F(SpeakerDiscoveryTest, EndsQuietlyWithTheManager) {
    background.network.addInterface(eth0, localIp, broadcast);
    background.network.scripts[localIp].datagrams = {playerAnswer(9)};
    background.state->end();
    run(true);
    EXPECT_TRUE(logged().empty());
    EXPECT_TRUE(background.http.requests.empty());
    EXPECT_TRUE(results.isEmpty());
}

} // namespace
} // namespace zofra
