// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SpeakerControl.h"

#include "speakers/SoapRequest.h"
#include "tests/speakers/Background.h"
#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <chrono>
#include <gtest/gtest.h>

namespace zofra {
namespace {

using test::answered;
using test::Background;

/// A request as the golden files spell it: what goes out on the wire, but for what the session adds.
QByteArray spell(const HttpRequest& request) {
    QByteArray text = request.method + ' ' + request.url.toEncoded() + '\n';
    for (const auto& [name, value] : request.headers)
        text += name + ": " + value + '\n';
    return text + '\n' + request.body;
}

/// The golden file of that name; with ZOFRA_UPDATE_GOLDEN set, first replaced by `actual`.
QByteArray golden(const QString& name, const QByteArray& actual) {
    QFile file(QStringLiteral(ZOFRA_SOURCE_DIR "/tests/speakers/golden/%1.txt").arg(name));
    if (qEnvironmentVariableIsSet("ZOFRA_UPDATE_GOLDEN") && file.open(QIODevice::WriteOnly)) {
        file.write(actual);
        file.close();
    }
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no golden file");
}

void expectGolden(const QString& name, const HttpRequest& request) {
    EXPECT_EQ(spell(request), golden(name, spell(request))) << name.toStdString();
    EXPECT_EQ(request.timeout, std::chrono::seconds(5));
    EXPECT_EQ(request.cachePolicy, HttpRequest::CachePolicy::useProtocol);
    EXPECT_EQ(request.purpose, HttpRequest::Purpose::order);
    EXPECT_EQ(request.route, HttpRequest::Route::direct);
}

class SpeakerControlTest : public testing::Test {
protected:
    SpeakerControlTest() { speaker.descriptionURL = test::descriptionUrl(5); }

    const HttpRequest& last() const { return background.http.requests.back(); }
    SpeakerControl::Completion record() {
        return [this](bool succeeded) { results.append(succeeded); };
    }

    Background background;
    SpeakerControl control{background.state};
    SonosSpeaker speaker =
        test::otherPlayer(QStringLiteral("RINCON_00CAFE00000101400"), QStringLiteral("Kitchen"));
    QList<bool> results;
};

TEST_F(SpeakerControlTest, RequestsGoOutByteForByte) {
    const auto endpoint = transportEndpoint(speaker);
    control.setAVTransportURI(
        endpoint, QStringLiteral("x-rincon-mp3radio://icecast-qmusicbe-cdp.triple-it.nl/qmusic.mp3"), {});
    expectGolden(QStringLiteral("set_stream"), last());
    control.setAVTransportURI(endpoint, QStringLiteral("x-rincon-mp3radio://h:8000/a?b=1&c=<\"d\">&amp;'é"),
                              {});
    expectGolden(QStringLiteral("set_stream_escaped"), last());
    control.join(speaker, speaker, {});
    expectGolden(QStringLiteral("join"), last());
    control.play(speaker, {});
    expectGolden(QStringLiteral("play"), last());
    control.pause(speaker, {});
    expectGolden(QStringLiteral("pause"), last());
    control.stop(speaker, {});
    expectGolden(QStringLiteral("stop"), last());
    control.setVolume(speaker, 42, {});
    expectGolden(QStringLiteral("set_volume"), last());
    speaker.groupCoordinatorId = QStringLiteral("B");
    control.detachIfGrouped(speaker, record());
    expectGolden(QStringLiteral("become_coordinator"), last());
    EXPECT_EQ(background.http.requests.size(), 8U);
}

TEST_F(SpeakerControlTest, TheTopologyRequestHasAnEmptyBody) {
    expectGolden(
        QStringLiteral("get_zone_group_state"),
        soapRequest(speaker.endpoint(speaker.topologyPath, QString::fromLatin1(ControlPath::topology)),
                    QStringLiteral("ZoneGroupTopology:1"), QStringLiteral("GetZoneGroupState"), QString()));
}

TEST_F(SpeakerControlTest, GoesToTheAnnouncedAddresses) {
    speaker.transportPath = QStringLiteral("/transport");
    speaker.renderingPath = QStringLiteral("https://10.0.0.9/rendering");
    control.play(speaker, {});
    EXPECT_EQ(last().url.toString(), QStringLiteral("http://10.0.0.5:1400/transport"));
    control.setVolume(speaker, 1, {});
    EXPECT_EQ(last().url.toString(), QStringLiteral("https://10.0.0.9/rendering"));
}

TEST_F(SpeakerControlTest, VolumeIsClamped) {
    for (const auto& [percent, sent] :
         {std::pair(-5, 0), {0, 0}, {100, 100}, {130, 100}, {INT_MIN, 0}, {INT_MAX, 100}}) {
        control.setVolume(speaker, percent, {});
        EXPECT_TRUE(last().body.contains("<DesiredVolume>" + QByteArray::number(sent) + "</DesiredVolume>"))
            << percent;
    }
}

TEST_F(SpeakerControlTest, TheAmpersandOfAnAddressIsEscapedOnceAndTheMetadataNotAgain) {
    control.setAVTransportURI(transportEndpoint(speaker), QStringLiteral("u?a&b"), {});
    EXPECT_TRUE(last().body.contains("<CurrentURI>u?a&amp;b</CurrentURI>"));
    EXPECT_FALSE(last().body.contains("&amp;lt;"));
}

TEST_F(SpeakerControlTest, Status200And204AreSuccess) {
    for (const int status : {200, 204, 201, 206, 0, 302, 403, 500}) {
        control.play(speaker, record());
        background.http.answer(status, {});
    }
    EXPECT_EQ(results, (QList<bool>{true, true, false, false, false, false, false, false}));
    EXPECT_EQ(background.log.lines.size(), 6U);
}

TEST_F(SpeakerControlTest, AFailureIsLoggedOnceWithItsStatus) {
    control.pause(speaker, record());
    background.http.answer(500, "<fault/>");
    control.stop(speaker, {});
    background.http.fail({HttpError::Code::timedOut, 0, QStringLiteral("timed out")});
    EXPECT_EQ(background.log.lines,
              (std::vector<QString>{QStringLiteral("[Sonos] SOAP Pause an 10.0.0.5 fehlgeschlagen: HTTP 500"),
                                    QStringLiteral("[Sonos] SOAP Stop an 10.0.0.5 fehlgeschlagen: HTTP 0")}));
    EXPECT_EQ(background.denials, QList<bool>());
}

TEST_F(SpeakerControlTest, AnEndpointWithoutAHostIsLoggedAsUnknown) {
    control.sendSOAPAction(QUrl(QStringLiteral("file:///x")), QStringLiteral("AVTransport:1"),
                           QStringLiteral("Play"), QString(), record());
    background.http.fail({HttpError::Code::unsupportedUrl, 0, QStringLiteral("no")});
    EXPECT_EQ(background.log.lines,
              (std::vector<QString>{QStringLiteral("[Sonos] SOAP Play an ? fehlgeschlagen: HTTP 0")}));
    EXPECT_EQ(results, QList<bool>{false});
}

TEST_F(SpeakerControlTest, NothingIsRetried) {
    control.play(speaker, record());
    background.http.fail({HttpError::Code::connectionLost, 0, QString()});
    EXPECT_EQ(background.http.requests.size(), 1U);
}

TEST_F(SpeakerControlTest, ARefusedConnectionAttemptIsADenial) {
    control.play(speaker, record());
    background.http.fail({HttpError::Code::notConnected, EPERM, QStringLiteral("refused")});
    EXPECT_EQ(background.denials, QList<bool>()) << "not before the main queue's next turn";
    background.queue.drain();
    EXPECT_EQ(background.denials, QList<bool>{true});
    EXPECT_EQ(results, QList<bool>{false});
}

TEST_F(SpeakerControlTest, ARefusalBeyondTheSearchedNetworkIsNoDenial) {
    for (const auto* host : {"[fd00::5]", "10.0.1.5", "player.local"}) {
        speaker.descriptionURL = QUrl(QStringLiteral("http://%1:1400/d.xml").arg(QLatin1String(host)));
        control.play(speaker, record());
        background.http.fail({HttpError::Code::notConnected, ENETUNREACH, QStringLiteral("no route")});
        background.queue.drain();
        EXPECT_TRUE(background.denials.isEmpty()) << host;
    }
}

TEST(LocalNetworkDenialTest, IsNotConnectedOrSaysSo) {
    EXPECT_FALSE(isLocalNetworkDenial(std::nullopt));
    EXPECT_TRUE(isLocalNetworkDenial(HttpError{HttpError::Code::notConnected, 0, QString()}));
    EXPECT_TRUE(isLocalNetworkDenial(
        HttpError{HttpError::Code::other, 0, QStringLiteral("No: Local network prohibited (1)")}));
    EXPECT_FALSE(isLocalNetworkDenial(
        HttpError{HttpError::Code::other, 0, QStringLiteral("local network prohibited")}));
    for (const auto code :
         {HttpError::Code::timedOut, HttpError::Code::cannotFindHost, HttpError::Code::cannotConnect,
          HttpError::Code::tooLarge, HttpError::Code::connectionLost, HttpError::Code::cancelled})
        EXPECT_FALSE(isLocalNetworkDenial(HttpError{code, 0, QString()}));
}

TEST_F(SpeakerControlTest, WhoLeadsItselfHasNothingToLeave) {
    control.detachIfGrouped(speaker, record());
    speaker.groupCoordinatorId = speaker.id;
    control.detachIfGrouped(speaker, record());
    auto own = test::ownPlayer(QStringLiteral("own"), QStringLiteral("Hall"));
    own.groupCoordinatorId = QStringLiteral("B");
    control.detachIfGrouped(own, record());
    EXPECT_EQ(results, (QList<bool>{true, true, true})) << "each in place";
    EXPECT_TRUE(background.http.requests.empty());
}

TEST_F(SpeakerControlTest, LeavingAGroupPassesItsResultOn) {
    speaker.groupCoordinatorId = QStringLiteral("B");
    control.detachIfGrouped(speaker, record());
    EXPECT_TRUE(results.isEmpty());
    background.http.answer(200, {});
    control.detachIfGrouped(speaker, record());
    background.http.answer(500, {});
    EXPECT_EQ(results, (QList<bool>{true, false}));
}

TEST_F(SpeakerControlTest, AfterTheManagersEndTheCompletionIsCalledButNothingLoggedOrNoted) {
    control.play(speaker, record());
    control.pause(speaker, record());
    background.state->end();
    background.http.answer(500, {});
    background.http.fail({HttpError::Code::notConnected, EPERM, QString()});
    background.queue.drain();
    EXPECT_EQ(results, (QList<bool>{false, false}));
    EXPECT_TRUE(background.log.lines.empty());
    EXPECT_EQ(background.denials, QList<bool>());
}

} // namespace
} // namespace zofra
