// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/ProgramFindings.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra::doctor {
namespace {

ProgramFacts running() {
    ProgramFacts facts;
    facts.hasBus = facts.isRunning = facts.hasMediaName = true;
    facts.processId = 4711;
    facts.ownVersion = u"1.0 (1)"_qs;
    facts.status = QJsonObject{
        {u"version"_qs, u"1.0 (1)"_qs}, {u"station"_qs, u"joe"_qs},          {u"playing"_qs, false},
        {u"buffering"_qs, false},       {u"output_title"_qs, u"Kitchen"_qs}, {u"tray"_qs, u"direct"_qs},
        {u"network_denied"_qs, false}};
    return facts;
}

TEST(BusFindingsTest, IsNeeded) {
    ProgramFacts facts;
    EXPECT_EQ(judgeBus(facts).verdict, Verdict::problem);
    EXPECT_TRUE(judgeBus(facts).text.contains(u"DBUS_SESSION_BUS_ADDRESS"_qs));
    facts.busAddress = u"unix:path=/nowhere"_qs;
    EXPECT_TRUE(judgeBus(facts).text.contains(facts.busAddress));
    EXPECT_EQ(judgeProgram(facts).verdict, Verdict::skipped);
    facts.hasBus = true;
    EXPECT_EQ(judgeBus(facts).verdict, Verdict::ok);
}

TEST(BusFindingsTest, KnowsThatARunningProgramIsAMediaPlayer) {
    auto facts = running();
    EXPECT_EQ(judgeBus(facts).verdict, Verdict::ok);
    facts.hasMediaName = false;
    EXPECT_EQ(judgeBus(facts).verdict, Verdict::problem);
}

TEST(ProgramFindingsTest, SaysWhatItDoes) {
    EXPECT_EQ(judgeProgram(running()).text, u"running (process 4711): silent; mode direct"_qs);
    auto facts = running();
    facts.status->insert(u"playing"_qs, true);
    EXPECT_EQ(judgeProgram(facts).text, u"running (process 4711): playing joe (Kitchen); mode direct"_qs);
    facts.status->insert(u"buffering"_qs, true);
    EXPECT_TRUE(judgeProgram(facts).text.contains(u"waiting for the sound of joe"_qs));
    facts.isRunning = false;
    EXPECT_EQ(judgeProgram(facts).text, u"not running"_qs);
    EXPECT_EQ(judgeProgram(facts).verdict, Verdict::ok);
}

TEST(ProgramFindingsTest, NoticesOneThatHangsIsOldOrDenied) {
    auto facts = running();
    facts.status.reset();
    EXPECT_EQ(judgeProgram(facts).verdict, Verdict::problem);
    EXPECT_TRUE(judgeProgram(facts).cure.contains(u"kill 4711"_qs));
    facts.processId = 0;
    EXPECT_FALSE(judgeProgram(facts).cure.contains(u"kill"_qs));
    facts = running();
    facts.ownVersion = u"1.1 (2)"_qs;
    EXPECT_TRUE(judgeProgram(facts).cure.contains(u"updated"_qs));
    facts = running();
    facts.status->insert(u"network_denied"_qs, true);
    EXPECT_TRUE(judgeProgram(facts).text.contains(u"denied the local network"_qs));
}

} // namespace
} // namespace zofra::doctor
