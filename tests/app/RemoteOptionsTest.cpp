// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RemoteOptions.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

Options travelled(const Options& options) {
    const auto result = fromVariantMap(toVariantMap(options));
    if (!result) {
        ADD_FAILURE() << result.error().toStdString();
        return {};
    }
    return *result;
}

bool isRefused(const QVariantMap& map) {
    return !fromVariantMap(map).has_value();
}

TEST(RemoteOptionsTest, ArriveAsTheyWereSent) {
    Options options;
    options.playback = Options::Playback::play;
    options.station = RadioStation::joe;
    options.output = u"Living Room"_qs;
    options.volume = Options::Volume{Options::Volume::Kind::change, 0};
    options.stopIn = std::chrono::seconds(90);
    options.notify = false;
    options.endpointsFile = u"/tmp/e.ini"_qs;
    options.noDiscovery = true;
    options.headless = true;
    options.language = AppLanguage::nl;
    EXPECT_EQ(travelled(options), options);
    options = {};
    options.playback = Options::Playback::toggle;
    options.stationStep = Options::StationStep::previous;
    options.volume = Options::Volume{Options::Volume::Kind::absolute, 40};
    options.stopIn = std::chrono::seconds(0);
    EXPECT_EQ(travelled(options), options);
    options = {};
    options.volume = Options::Volume{Options::Volume::Kind::change, -5};
    EXPECT_EQ(travelled(options), options);
    options = {};
    options.task = Options::Task::quit;
    EXPECT_EQ(travelled(options), options);
}

TEST(RemoteOptionsTest, NothingIsAnEmptyMap) {
    EXPECT_TRUE(toVariantMap({}).isEmpty());
    Options options;
    options.language = AppLanguage::fr;
    EXPECT_TRUE(toVariantMap(options).isEmpty()) << "whoever asks";
}

TEST(RemoteOptionsTest, WhatAnyoneOnTheBusMaySendIsChecked) {
    EXPECT_TRUE(isRefused({{u"play"_qs, u"yes"_qs}}));
    EXPECT_TRUE(isRefused({{u"station"_qs, u"nonsense"_qs}}));
    EXPECT_TRUE(isRefused({{u"station"_qs, 3}}));
    EXPECT_TRUE(isRefused({{u"output"_qs, true}}));
    EXPECT_TRUE(isRefused({{u"unknown"_qs, true}}));
    EXPECT_TRUE(isRefused({{u"volume"_qs, u"101"_qs}}));
    EXPECT_TRUE(isRefused({{u"volume"_qs, 40}}));
    EXPECT_TRUE(isRefused({{u"stop-in"_qs, u"25h"_qs}}));
    EXPECT_TRUE(isRefused({{u"notify"_qs, true}}));
    EXPECT_TRUE(isRefused({{u"language"_qs, u"xx"_qs}}));
    EXPECT_FALSE(isRefused({{u"play"_qs, false}}));
}

TEST(RemoteOptionsTest, ARefusalIsInTheLanguageOfWhoeverAsked) {
    const auto refusal = [](const char* language) {
        return fromVariantMap({{u"language"_qs, QString::fromLatin1(language)}, {u"volume"_qs, u"101"_qs}})
            .error();
    };
    EXPECT_EQ(fromVariantMap({{u"volume"_qs, u"101"_qs}}).error(),
              u"option \"volume\" is unknown or has a wrong value"_qs);
    EXPECT_EQ(refusal("en"), u"option \"volume\" is unknown or has a wrong value"_qs);
    EXPECT_EQ(refusal("nl"), u"optie \"volume\" is onbekend of heeft een verkeerde waarde"_qs);
    EXPECT_EQ(refusal("fr"), u"l’option « volume » est inconnue ou sa valeur est fausse"_qs);
    EXPECT_EQ(refusal("de"), u"die Option „volume“ ist unbekannt oder hat einen falschen Wert"_qs);
}

} // namespace
} // namespace zofra
