// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/Examination.h"

#include "tests/support/FakeTaskPool.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra::doctor {
namespace {

using namespace std::chrono_literals;

class ExaminationTest : public testing::Test {
protected:
    std::unique_ptr<Check> check(TaskPool& pool, const QString& name) {
        return std::make_unique<BackgroundCheck>(pool, queue, skipped(name, u"unfinished"_qs), [name] {
            return Findings{fine(name, u"first"_qs), fine(name, u"second"_qs)};
        });
    }
    std::unique_ptr<Examination> run(std::vector<std::unique_ptr<Check>> checks) {
        auto examination = std::make_unique<Examination>(queue, std::move(checks));
        examination->run(14s, [this](const Findings& findings) {
            ++finished;
            for (const auto& finding : findings)
                found.append(finding.area + u' ' + finding.text);
        });
        return examination;
    }

    test::ManualMainQueue queue;
    test::FakeTaskPool now{test::FakeTaskPool::Mode::inPlace};
    test::FakeTaskPool later{test::FakeTaskPool::Mode::onDemand};
    int finished = 0;
    QStringList found;
};

TEST_F(ExaminationTest, KeepsTheOrderOfTheChecksWhoeverIsFirst) {
    std::vector<std::unique_ptr<Check>> checks;
    checks.push_back(check(later, u"slow"_qs));
    checks.push_back(check(now, u"quick"_qs));
    const auto examination = run(std::move(checks));
    queue.drain();
    EXPECT_EQ(finished, 0);
    later.runAll();
    EXPECT_EQ(finished, 0) << "told on the main thread only";
    queue.drain();
    EXPECT_EQ(finished, 1);
    EXPECT_EQ(found,
              (QStringList{u"slow first"_qs, u"slow second"_qs, u"quick first"_qs, u"quick second"_qs}));
    queue.advance(1min);
    EXPECT_EQ(finished, 1);
}

TEST_F(ExaminationTest, DoesNotWaitForWhatNeverAnswers) {
    std::vector<std::unique_ptr<Check>> checks;
    checks.push_back(check(now, u"quick"_qs));
    checks.push_back(check(later, u"never"_qs));
    const auto examination = run(std::move(checks));
    queue.advance(13999ms);
    EXPECT_EQ(finished, 0);
    queue.advance(1ms);
    EXPECT_EQ(finished, 1);
    EXPECT_EQ(found, (QStringList{u"quick first"_qs, u"quick second"_qs, u"never unfinished"_qs}));
    later.runAll();
    queue.drain();
    EXPECT_EQ(finished, 1) << "too late";
}

TEST_F(ExaminationTest, LeavesWorkUnheardWhenItEnds) {
    std::vector<std::unique_ptr<Check>> checks;
    checks.push_back(check(later, u"slow"_qs));
    run(std::move(checks)).reset();
    later.runAll();
    queue.advance(1min);
    EXPECT_EQ(finished, 0);
}

} // namespace
} // namespace zofra::doctor
