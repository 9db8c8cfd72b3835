// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/speakers/Background.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

TEST(SpeakerBackground, LogsWithItsPrefix) {
    test::Background background;
    background.state->log(QStringLiteral("Zeile"));
    EXPECT_EQ(background.log.lines, std::vector<QString>{QStringLiteral("[Sonos] Zeile")});
}

TEST(SpeakerBackground, PostsToTheMainQueueUnlessTheManagerHasEnded) {
    test::Background background;
    int runs = 0;
    background.state->post([&] { ++runs; });
    EXPECT_EQ(runs, 0);
    background.mainQueue.drain();
    EXPECT_EQ(runs, 1);
    background.state->post([&] { ++runs; });
    background.state->end();
    background.mainQueue.drain();
    EXPECT_EQ(runs, 1) << "posted before the end, due after it";
}

TEST(SpeakerBackground, SaysNothingFromTheEndOn) {
    test::Background background;
    background.state->end();
    background.state->log(QStringLiteral("Zeile"));
    background.state->noteLocalNetworkDenial();
    EXPECT_EQ(background.mainQueue.pendingWork(), 0U);
    EXPECT_TRUE(background.log.lines.empty());
}

} // namespace
} // namespace zofra
