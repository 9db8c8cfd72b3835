// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/HostTargets.h"

#include "stations/RadioStation.h"
#include "tests/support/PrintQt.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zofra::doctor {
namespace {

TEST(HostTargetsTest, AreEveryHostOnceAndEveryKey) {
    const auto targets = HostTarget::all(ServiceHosts());
    QStringList seen;
    QStringList keys;
    for (const auto& target : targets) {
        seen.append(target.area() + u' ' + target.host);
        keys += target.keys;
        EXPECT_FALSE(target.urls.isEmpty());
        for (const auto& url : target.urls) {
            EXPECT_EQ(url.scheme(), u"https"_qs);
            EXPECT_EQ(url.authority(), target.host);
            EXPECT_EQ(target.urls.count(url), 1);
        }
    }
    EXPECT_EQ(QSet<QString>(seen.begin(), seen.end()).size(), seen.size());
    EXPECT_EQ(seen.mid(seen.size() - 3),
              (QStringList{u"live socket.qmusic.be"_qs, u"onair core-search.radioplayer.cloud"_qs,
                           u"scraper scraper.onlineradiobox.com"_qs}));
    EXPECT_EQ(seen.first(), u"stream streams.zofra.example"_qs);
    EXPECT_EQ(keys.size(), 21) << "eighteen streams and three services";
}

TEST(HostTargetsTest, AskForEveryStream) {
    QSet<QUrl> asked;
    for (const auto& target : HostTarget::all(ServiceHosts())) {
        if (target.kind == HostTarget::Kind::stream)
            asked += QSet<QUrl>(target.urls.begin(), target.urls.end());
    }
    QSet<QUrl> streams;
    for (const RadioStation station : RadioStation::allCases)
        streams += {station.streamAAC(ServiceHosts()), station.streamMP3(ServiceHosts())};
    EXPECT_EQ(asked, streams);
}

TEST(HostTargetsTest, TheOnAirServiceIsAskedForAStationItKnows) {
    const auto targets = HostTarget::all(ServiceHosts());
    const auto onAir = std::find_if(targets.begin(), targets.end(), [](const auto& target) {
        return target.kind == HostTarget::Kind::onAir;
    });
    ASSERT_NE(onAir, targets.end());
    EXPECT_FALSE(onAir->rpId.isEmpty());
    EXPECT_TRUE(onAir->urls.first().query().endsWith(onAir->rpId));
}

} // namespace
} // namespace zofra::doctor
