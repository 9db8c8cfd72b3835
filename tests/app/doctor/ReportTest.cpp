// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/Report.h"

#include "tests/support/PrintQt.h"

#include <QJsonArray>

#include <gtest/gtest.h>

namespace zofra::doctor {
namespace {

const QString panel = QStringLiteral("panel");
const QString stream = QStringLiteral("stream");

Report reportOf(Findings findings) {
    return {QStringLiteral("1.0 (1)"), std::move(findings)};
}

TEST(ReportTest, HasAnExitStatusForEachKindOfEnd) {
    EXPECT_EQ(reportOf({}).exitStatus(), 0);
    EXPECT_EQ(reportOf({fine(panel, u"a"_qs), skipped(panel, u"b"_qs)}).exitStatus(), 0);
    EXPECT_EQ(reportOf({fine(panel, u"a"_qs), problem(panel, u"b"_qs, u"c"_qs)}).exitStatus(), 1);
    EXPECT_EQ(reportOf({fine(u"endpoints"_qs, u"a"_qs)}).exitStatus(), 0);
    EXPECT_EQ(
        reportOf({problem(panel, u"a"_qs, u"b"_qs), problem(u"endpoints"_qs, u"c"_qs, u"d"_qs)}).exitStatus(),
        2);
}

TEST(ReportTest, IsOneObjectForPrograms) {
    const auto json = reportOf({fine(panel, u"it is there"_qs, {{u"mode"_qs, u"direct"_qs}}),
                                skipped(stream, u"not asked"_qs), problem(stream, u"gone"_qs, u"wait"_qs)})
                          .toJson();
    EXPECT_EQ(json.value(u"version"_qs).toString(), u"1.0 (1)"_qs);
    EXPECT_EQ(json.value(u"status"_qs).toString(), u"problem"_qs);
    EXPECT_EQ(json.value(u"problems"_qs).toInt(), 1);
    const auto checks = json.value(u"checks"_qs).toArray();
    ASSERT_EQ(checks.size(), 3);
    const QJsonObject expected{{u"area"_qs, panel},
                               {u"status"_qs, u"ok"_qs},
                               {u"text"_qs, u"it is there"_qs},
                               {u"cure"_qs, QJsonValue()},
                               {u"details"_qs, QJsonObject{{u"mode"_qs, u"direct"_qs}}}};
    EXPECT_EQ(checks.at(0).toObject(), expected);
    EXPECT_EQ(checks.at(1).toObject().value(u"status"_qs).toString(), u"skipped"_qs);
    EXPECT_EQ(checks.at(2).toObject().value(u"cure"_qs).toString(), u"wait"_qs);
}

TEST(ReportTest, IsAScreenForPeople) {
    EXPECT_EQ(reportOf({fine(panel, u"it is there"_qs), skipped(stream, u"not asked"_qs),
                        problem(u"audio"_qs, u"silent"_qs, u"start it."_qs)})
                  .toText(),
              u"Zofra Zofra 1.0 (1)\n"
              "\n"
              "ok       panel     it is there\n"
              "-        stream    not asked\n"
              "PROBLEM  audio     silent\n"
              "                   To do: start it.\n"
              "\n"
              "1 problem."_qs);
    EXPECT_TRUE(reportOf({fine(panel, u"a"_qs)}).toText().endsWith(u"\nEverything is fine."_qs));
    EXPECT_TRUE(reportOf({problem(panel, u"a"_qs, u"b"_qs), problem(panel, u"c"_qs, u"d"_qs)})
                    .toText()
                    .endsWith(u"\n2 problems."_qs));
}

TEST(ReportTest, TellsACureOnce) {
    EXPECT_EQ(reportOf({problem(stream, u"one"_qs, u"wait."_qs), problem(stream, u"two"_qs, u"wait."_qs),
                        problem(panel, u"three"_qs, u"run."_qs), problem(stream, u"four"_qs, u"wait."_qs)})
                  .toText()
                  .section(u'\n', 2),
              u"PROBLEM  stream    one\n"
              "PROBLEM  stream    two\n"
              "                   To do: wait.\n"
              "PROBLEM  panel     three\n"
              "                   To do: run.\n"
              "PROBLEM  stream    four\n"
              "                   To do: as above.\n"
              "\n"
              "4 problems."_qs);
}

TEST(ReportTest, SpeaksTheUsersLanguage) {
    const auto text = reportOf({problem(panel, u"kapot"_qs, u"herstel het."_qs)}).toText(AppLanguage::nl);
    EXPECT_TRUE(text.contains(u"\nPROBLEEM panel     kapot\n"_qs)) << text.toStdString();
    EXPECT_TRUE(text.contains(u"Te doen: herstel het.\n"_qs)) << text.toStdString();
    EXPECT_TRUE(text.endsWith(u"\n1 probleem."_qs)) << text.toStdString();
}

TEST(ReportTest, FitsTheScreenWhateverWasFound) {
    const QString word(300, u'x');
    const QString sentence = QString(u"many small words "_qs).repeated(40);
    for (const int columns : {80, 40, 1}) {
        const auto text =
            reportOf({fine(panel, word), problem(stream, sentence, word), fine(panel, QString())})
                .toText(AppLanguage::en, columns);
        for (const auto& line : text.split(u'\n'))
            EXPECT_LE(line.size(), std::max(columns, 39)) << line.toStdString();
        EXPECT_EQ(text.count(u'x'), 600) << "nothing is lost";
        EXPECT_EQ(text.count(u"small"_qs), 40);
    }
}

TEST(ReportTest, LetsNothingSteerTheTerminal) {
    const auto text = reportOf({fine(panel, u"\x1b[31mred\nPROBLEM"_qs)}).toText();
    EXPECT_FALSE(text.contains(u'\x1b'));
    EXPECT_EQ(text.count(u'\n'), 4);
}

} // namespace
} // namespace zofra::doctor
