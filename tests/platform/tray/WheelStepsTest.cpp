// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/WheelSteps.h"

#include <gtest/gtest.h>
#include <limits>

namespace zofra {
namespace {

TEST(WheelStepsTest, CountsNotchesHoweverThePanelReportsThem) {
    WheelSteps wheel;
    EXPECT_EQ(wheel.add(1), 1);
    EXPECT_EQ(wheel.add(-1), -1);
    EXPECT_EQ(wheel.add(120), 1);
    EXPECT_EQ(wheel.add(-240), -2);
    EXPECT_EQ(wheel.add(0), 0);
}

TEST(WheelStepsTest, GathersSmallAnglesToWholeSteps) {
    WheelSteps wheel;
    int steps = 0;
    for (int i = 0; i < 16; ++i)
        steps += wheel.add(15);
    EXPECT_EQ(steps, 2);
    EXPECT_EQ(wheel.add(-119), 0);
    EXPECT_EQ(wheel.add(-1), -1) << "one notch by a small number";
}

TEST(WheelStepsTest, BoundsWhatAPeerMaySend) {
    WheelSteps wheel;
    EXPECT_EQ(wheel.add(std::numeric_limits<int>::max()), 20);
    EXPECT_EQ(wheel.add(std::numeric_limits<int>::min()), -20);
}

TEST(WheelStepsTest, OneNotchIsOneStepHoweverAPanelTellsIt) {
    WheelSteps inverted;
    inverted.setPanel({false, 1});
    EXPECT_EQ(inverted.add(1), -1);
    EXPECT_EQ(inverted.add(std::numeric_limits<int>::min()), 20);
    WheelSteps twice;
    twice.setPanel({false, 2});
    EXPECT_EQ(twice.add(-1) + twice.add(-1), 1) << "told twice of each notch";
    EXPECT_EQ(twice.add(1) + twice.add(1), -1);
}

} // namespace
} // namespace zofra
