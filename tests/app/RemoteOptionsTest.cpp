// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RemoteOptions.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

Options travelled(const Options& options) {
    const auto result = fromVariantMap(toVariantMap(options));
    if (const auto* refusal = std::get_if<QString>(&result)) {
        ADD_FAILURE() << refusal->toStdString();
        return {};
    }
    return std::get<Options>(result);
}

bool isRefused(const QVariantMap& map) {
    return std::holds_alternative<QString>(fromVariantMap(map));
}

TEST(RemoteOptions, ArriveAsTheyWereSent) {
    Options options;
    options.play = true;
    options.station = RadioStation::joe;
    options.output = u"Living Room"_qs;
    options.endpointsFile = u"/tmp/e.ini"_qs;
    options.noDiscovery = true;
    options.headless = true;
    const Options arrived = travelled(options);
    EXPECT_TRUE(arrived.play);
    EXPECT_EQ(arrived.station, options.station);
    EXPECT_EQ(arrived.output, options.output);
    EXPECT_EQ(arrived.firstStartOnly(), options.firstStartOnly());
    EXPECT_EQ(arrived.task, Options::Task::run);
    options = {};
    options.task = Options::Task::quit;
    EXPECT_EQ(travelled(options).task, Options::Task::quit);
}

TEST(RemoteOptions, NothingIsAnEmptyMap) {
    EXPECT_TRUE(toVariantMap({}).isEmpty());
}

TEST(RemoteOptions, WhatAnyoneOnTheBusMaySendIsChecked) {
    EXPECT_TRUE(isRefused({{u"play"_qs, u"yes"_qs}}));
    EXPECT_TRUE(isRefused({{u"station"_qs, u"nonsense"_qs}}));
    EXPECT_TRUE(isRefused({{u"station"_qs, 3}}));
    EXPECT_TRUE(isRefused({{u"output"_qs, true}}));
    EXPECT_TRUE(isRefused({{u"unknown"_qs, true}}));
    EXPECT_FALSE(isRefused({{u"play"_qs, false}}));
}

} // namespace
} // namespace zofra
