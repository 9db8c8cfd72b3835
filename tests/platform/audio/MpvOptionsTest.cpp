// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/MpvOptions.h"

#include "tests/support/PrintQt.h"

#include <QRegularExpression>

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <string>

namespace zofra::test {
namespace {

std::map<std::string, MpvOption> byName() {
    std::map<std::string, MpvOption> result;
    for (const auto& option : mpvOptions()) {
        const bool isNew = result.insert({option.name, option}).second;
        EXPECT_TRUE(isNew) << option.name << " is given twice";
    }
    return result;
}

TEST(MpvVolumeTest, isCubic) {
    EXPECT_DOUBLE_EQ(mpvVolume(1.0F), 100.0);
    EXPECT_DOUBLE_EQ(mpvVolume(0.0F), 0.0);
    EXPECT_DOUBLE_EQ(mpvVolume(0.125F), 50.0);
    EXPECT_NEAR(std::pow(mpvVolume(0.5F) / 100.0, 3), 0.5, 1e-9) << "half is half the amplitude";
}

TEST(MpvVolumeTest, staysOnItsScale) {
    EXPECT_DOUBLE_EQ(mpvVolume(7.0F), 100.0);
    EXPECT_DOUBLE_EQ(mpvVolume(-1.0F), 0.0);
}

TEST(MpvOptionsTest, insistOnWhatKeepsTheListenerSafe) {
    const auto options = byName();
    const std::map<std::string, QByteArray> expected{
        {"tls-verify", "yes"},
        {"config", "no"},
        {"load-scripts", "no"},
        {"load-unsafe-playlists", "no"},
        {"demuxer", "lavf"},
        {"stream-lavf-o", "protocol_whitelist=[none]"},
        {"demuxer-lavf-o", "format_whitelist=[aac,mp3],protocol_whitelist=[none],indexmem=4096"},
    };
    for (const auto& [name, value] : expected) {
        const auto option = options.find(name);
        ASSERT_NE(option, options.end()) << name;
        EXPECT_EQ(option->second.value, value) << name;
        EXPECT_EQ(option->second.need, MpvOption::Need::required) << name;
    }
}

} // namespace
} // namespace zofra::test
