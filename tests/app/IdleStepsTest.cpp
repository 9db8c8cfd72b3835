// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/IdleSteps.h"

#include "tests/support/ManualMainQueue.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace zofra::test {
namespace {

TEST(IdleStepsTest, RunsOneStepForEachPauseInTheirOrder) {
    ManualMainQueue queue;
    std::string done;
    runIdleSteps(queue, {[&] { done += 'a'; }, [&] { done += 'b'; }, [&] { done += 'c'; }});
    queue.drain();
    EXPECT_EQ(done, "");
    queue.advance(idlePause);
    EXPECT_EQ(done, "a");
    // What is asked for meanwhile comes first.
    queue.async([&] { done += '!'; });
    queue.advance(idlePause);
    EXPECT_EQ(done, "a!b");
    queue.advance(10 * idlePause);
    EXPECT_EQ(done, "a!bc");
}

TEST(IdleStepsTest, LetsGoOfEachStepOnceItHasRun) {
    ManualMainQueue queue;
    const auto kept = std::make_shared<int>(0);
    bool isLast = false;
    runIdleSteps(
        queue, {[held = kept] {}, [&, watched = std::weak_ptr(kept)] { isLast = watched.use_count() == 1; }});
    queue.advance(2 * idlePause);
    EXPECT_TRUE(isLast);
    EXPECT_EQ(kept.use_count(), 1);
}

} // namespace
} // namespace zofra::test
