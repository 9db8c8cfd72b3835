// SPDX-License-Identifier: GPL-3.0-or-later
// Work for later turns of the event loop.
#include "platform/linux/net/LaterWork.h"

#include <QCoreApplication>

#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace zofra::test {
namespace {

TEST(LaterWorkTest, doesItLaterInTheOrderPosted) {
    LaterWork later;
    std::vector<int> done;
    for (int i = 0; i < 3; ++i)
        later.post([&done, i] { done.push_back(i); });
    EXPECT_TRUE(done.empty());
    QCoreApplication::sendPostedEvents(&later);
    EXPECT_EQ(done, (std::vector<int>{0, 1, 2}));
}

TEST(LaterWorkTest, dropsWhatItHasNotComeTo) {
    auto later = std::make_unique<LaterWork>();
    const auto held = std::make_shared<int>();
    bool isDone = false;
    later->post([held, &isDone] { isDone = true; });
    EXPECT_EQ(held.use_count(), 2);
    later.reset();
    EXPECT_EQ(held.use_count(), 1);
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(isDone);
}

TEST(LaterWorkTest, mayBeEndedByItsWork) {
    auto later = std::make_unique<LaterWork>();
    int done = 0;
    // What the work has captured outlives the object that it ends.
    later->post([&, held = std::make_shared<int>(7)] {
        later.reset();
        done += *held;
    });
    later->post([&] { done += 100; });
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(done, 7);
}

} // namespace
} // namespace zofra::test
