// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusReport.h"
#include "tests/support/FakeDefaultsStore.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

class BarLineTest : public ::testing::Test {
protected:
    BarLineTest() {
        state.station = RadioStation::qmusic;
        state.isPlaying = true;
        state.currentSong = u"Artist – Song"_qs;
        state.targetTitle = u"This Mac"_qs;
        state.volume = 0.4F;
    }
    [[nodiscard]] QString value(const char* key) const {
        return barLine(state, languages).value(QLatin1String(key)).toVariant().toString();
    }

    FakeDefaultsStore defaults;
    LanguageManager languages{defaults, {u"en"_qs}};
    RadioState state;
};

TEST_F(BarLineTest, ShowsStationAndSongWhilePlaying) {
    EXPECT_EQ(value("text"), u"Qmusic: Artist – Song"_qs);
    EXPECT_EQ(value("class"), u"playing"_qs);
    EXPECT_EQ(value("percentage"), u"40"_qs);
    EXPECT_TRUE(value("tooltip").startsWith(u"Station: Qmusic"_qs)) << value("tooltip").toStdString();
    state.isBuffering = true;
    EXPECT_EQ(value("class"), u"buffering"_qs);
}

TEST_F(BarLineTest, ShowsTheStationAloneWhileStopped) {
    state.isPlaying = false;
    EXPECT_EQ(value("text"), u"Qmusic"_qs);
    EXPECT_EQ(value("class"), u"stopped"_qs);
}

TEST_F(BarLineTest, ShowsNothingWhileTheProgramIsOff) {
    EXPECT_EQ(emptyBarLine().value(u"class"_qs).toString(), u"off"_qs);
    EXPECT_EQ(plainBarLine(emptyBarLine()), QString());
}

TEST_F(BarLineTest, ASongIsOneLineAndGivesTheBarNoOrders) {
    state.currentSong = u"A\nB %{A1:reboot:}click%{A}"_qs;
    EXPECT_FALSE(value("text").contains(u'\n'));
    const QString plain = plainBarLine(barLine(state, languages));
    EXPECT_FALSE(plain.contains(u"%{"_qs)) << plain.toStdString();
    EXPECT_TRUE(plain.contains(u"click"_qs));
}

} // namespace
} // namespace zofra::test
