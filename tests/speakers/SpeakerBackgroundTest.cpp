// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/speakers/Background.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

TEST(SpeakerBackgroundTest, LogsWithItsPrefix) {
    test::Background background;
    background.state->log(QStringLiteral("Zeile"));
    EXPECT_EQ(background.log.lines, std::vector<QString>{QStringLiteral("[Sonos] Zeile")});
}

TEST(SpeakerBackgroundTest, PostsToTheMainQueueUnlessTheManagerHasEnded) {
    test::Background background;
    int runs = 0;
    background.state->post([&] { ++runs; });
    EXPECT_EQ(runs, 0);
    background.queue.drain();
    EXPECT_EQ(runs, 1);
    background.state->post([&] { ++runs; });
    background.state->end();
    background.queue.drain();
    EXPECT_EQ(runs, 1) << "posted before the end, due after it";
}

TEST(SpeakerBackgroundTest, SaysNothingFromTheEndOn) {
    test::Background background;
    background.state->end();
    background.state->log(QStringLiteral("Zeile"));
    background.state->noteLocalNetworkDenial();
    EXPECT_EQ(background.queue.pendingWork(), 0U);
    EXPECT_TRUE(background.log.lines.empty());
}

} // namespace
} // namespace zofra
