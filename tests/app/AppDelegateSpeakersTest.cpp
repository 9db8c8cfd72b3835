// SPDX-License-Identifier: GPL-3.0-or-later
// What the controller has the speakers do, down to the requests that leave.
#include "tests/app/DelegateTest.h"
#include "tests/speakers/Samples.h"

#include <QSet>

namespace zofra::test {
namespace {

/// The delegate in a home where the manager has found two players.
class AppDelegateSpeakersTest : public DelegateTest {
protected:
    void SetUp() override {
        launch();
        network.addInterface(u"eth0"_qs, u"10.0.0.2"_qs, u"10.0.0.255"_qs);
        for (const int host : names.keys())
            network.scripts[u"10.0.0.2"_qs].datagrams.push_back(ssdpAnswer(descriptionUrl(host).toString()));
        http.automatic = [this](const HttpRequest& request) { return answer(request); };
        sonos->discoverDevices(false);
        tasks.runAll();
        queue.drain();
        ASSERT_EQ(sonos->rooms.get().size(), 2);
        record.clear();
    }

    [[nodiscard]] HttpResult answer(const HttpRequest& request) const {
        if (actionOf(request) == QLatin1String("GetZoneGroupState"))
            return answered(500);
        if (request.method == "POST")
            return answered(200);
        const int host = request.url.host().section(u'.', 3).toInt();
        return names.contains(host) ? answered(200, description(u"RINCON_%1"_qs.arg(host), names[host]))
                                    : failed(HttpError::Code::timedOut);
    }
    void choose(const AudioOutputTarget& target) {
        sonos->activeTarget = target;
        queue.drain();
        record.clear();
    }
    static MenuItem carrying(float volume) {
        MenuItem item;
        item.representedObject = volume;
        return item;
    }

    const QMap<int, QString> names{{5, u"Kitchen"_qs}, {6, u"Living Room"_qs}};
};

TEST_F(AppDelegateSpeakersTest, ThisComputerStopsEveryPlayerBeforeItSaysSo) {
    choose(AudioOutputTarget::sonosEverywhere());
    sonos->onPlaybackStateChanged = [this](bool playing) { record << u"told %1"_qs.arg(int(playing)); };
    delegate->selectOutputMac();
    EXPECT_EQ(recorded({u"POST"_qs, u"told"_qs}),
              (QStringList{u"POST Stop 10.0.0.5"_qs, u"POST Stop 10.0.0.6"_qs, u"told 0"_qs}));
}

TEST_F(AppDelegateSpeakersTest, QuittingDropsTheLocalStreamThenStopsEveryPlayerThenEnds) {
    delegate->togglePlayRadio();
    record.clear();
    delegate->quit();
    EXPECT_EQ(record, (QStringList{u"1 pause"_qs, u"1 item none"_qs, u"1 dropped"_qs,
                                   u"POST Stop 10.0.0.5"_qs, u"POST Stop 10.0.0.6"_qs, u"terminate"_qs}));
}

TEST_F(AppDelegateSpeakersTest, AVolumeEverywhereReachesEveryPlayer) {
    choose(AudioOutputTarget::sonosEverywhere());
    delegate->setVolumeFromMenuItem(carrying(0.5F));
    EXPECT_EQ(recorded({u"POST"_qs}),
              (QStringList{u"POST SetVolume 10.0.0.5"_qs, u"POST SetVolume 10.0.0.6"_qs}));
    EXPECT_TRUE(http.requests.back().body.contains("<DesiredVolume>50</DesiredVolume>"));
}

TEST_F(AppDelegateSpeakersTest, AVolumeHereReachesNoPlayer) {
    choose(AudioOutputTarget::localMac());
    delegate->setVolumeFromMenuItem(carrying(0.5F));
    EXPECT_EQ(recorded({u"POST"_qs}), QStringList());
}

TEST_F(AppDelegateSpeakersTest, SearchingFromTheMenuAsksEveryHostThoughPlayersHaveAnswered) {
    const auto hostsAsked = [this] {
        QSet<QString> asked;
        for (const HttpRequest& request : http.requests)
            asked << request.url.host();
        http.requests.clear();
        return asked.size();
    };
    hostsAsked();
    sonos->discoverDevices(false);
    tasks.runAll();
    queue.drain();
    EXPECT_LT(hostsAsked(), 10) << "by itself, who has answered is enough";
    delegate->rescanSonos();
    tasks.runAll();
    queue.drain();
    EXPECT_GT(hostsAsked(), 250);
}

} // namespace
} // namespace zofra::test
