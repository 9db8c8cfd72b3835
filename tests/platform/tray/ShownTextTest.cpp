// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/ShownText.h"

#include "platform/linux/tray/WheelSteps.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>
#include <limits>

namespace zofra {
namespace {

TEST(ShownText, AnOrdinaryTextIsShownAsItIs) {
    EXPECT_EQ(shownLine(u"Artist – Song (feat. Ünïcödé) 🎵"_qs), u"Artist – Song (feat. Ünïcödé) 🎵"_qs);
    EXPECT_EQ(shownLine(QString()), QString());
}

TEST(ShownText, BreaksAndControlsAreBlanks) {
    EXPECT_EQ(shownLine(u"a\nb\r\nc\td\x1B[1m\x7F\x85\u2028e\u2029f"_qs), u"a b  c d [1m   e f"_qs);
    EXPECT_EQ(shownLine(QString(QChar(u'\0')) + u'x'), u" x"_qs);
}

TEST(ShownText, DirectionalFormattingEndsWithTheText) {
    EXPECT_EQ(shownLine(u"\u202Eevil"_qs), u"\u202Eevil\u202C"_qs);
    EXPECT_EQ(shownLine(u"\u2067a\u202Bb"_qs), u"\u2067a\u202Bb\u202C\u2069"_qs);
    EXPECT_EQ(shownLine(u"\u2066a\u2069 b"_qs), u"\u2066a\u2069 b"_qs) << "already closed";
    EXPECT_EQ(shownLine(u"\u2068\u202Ea\u2069b"_qs), u"\u2068\u202Ea\u2069b"_qs)
        << "the end of an isolate ends what is inside";
    EXPECT_EQ(shownLine(u"a\u202C\u2069b"_qs), u"a\u202C\u2069b"_qs) << "closers alone do nothing";
}

TEST(ShownText, LongTextsAreElidedBetweenCharacters) {
    EXPECT_EQ(shownLine(QString(120, u'x')), QString(120, u'x'));
    EXPECT_EQ(shownLine(QString(121, u'x')), QString(119, u'x') + u'…');
    EXPECT_EQ(shownLine(QString(1 << 20, u'x')), QString(119, u'x') + u'…');
    EXPECT_EQ(shownLine(u"abc def"_qs, 5), u"abc…"_qs) << "no blank before the ellipsis";
    const QString family = u"👩‍👩‍👧"_qs;
    QString families;
    for (int i = 0; i < 30; ++i)
        families += family;
    const QString shown = shownLine(families, 10);
    EXPECT_EQ(shown, family + family + family + family + family + u'…')
        << "cut at four times the units, not inside";
    QString marks = u"a"_qs + QString(5000, QChar(0x0301));
    EXPECT_LE(shownLine(marks).size(), 121) << "one character of countless marks";
    EXPECT_TRUE(shownLine(u"\u2067"_qs + QString(500, u'x')).endsWith(u"…\u2069"_qs))
        << "closed behind the ellipsis";
}

TEST(ShownText, LinesAreKeptApartAndBounded) {
    EXPECT_EQ(shownLines(u"a\tb\nc"_qs), u"a b\nc"_qs);
    EXPECT_EQ(shownLines(u"\u202Ea\nb"_qs), u"\u202Ea\u202C\nb"_qs) << "closed within its own line";
    EXPECT_EQ(shownLines(QString(100, u'\n')).count(u'\n'), 7);
}

TEST(ShownText, UnderscoresAndAmpersandsMarkNothing) {
    EXPECT_EQ(busMenuLabel(u"_a__b & <i>"_qs), u"__a____b & <i>"_qs);
    EXPECT_EQ(widgetMenuText(u"_a & b && <i>"_qs), u"_a && b &&&& <i>"_qs);
    EXPECT_EQ(busMenuLabel(QString(200, u'_')).count(u'_'), 2 * 119) << "elided first, escaped then";
}

TEST(WheelSteps, CountsNotchesHoweverThePanelReportsThem) {
    WheelSteps wheel;
    EXPECT_EQ(wheel.add(1), 1);
    EXPECT_EQ(wheel.add(-1), -1);
    EXPECT_EQ(wheel.add(120), 1);
    EXPECT_EQ(wheel.add(-240), -2);
    EXPECT_EQ(wheel.add(0), 0);
}

TEST(WheelSteps, GathersSmallAnglesToWholeSteps) {
    WheelSteps wheel;
    int steps = 0;
    for (int i = 0; i < 16; ++i)
        steps += wheel.add(15);
    EXPECT_EQ(steps, 2);
    EXPECT_EQ(wheel.add(-119), 0);
    EXPECT_EQ(wheel.add(-1), -1) << "one notch by a small number";
}

TEST(WheelSteps, BoundsWhatAPeerMaySend) {
    WheelSteps wheel;
    EXPECT_EQ(wheel.add(std::numeric_limits<int>::max()), 20);
    EXPECT_EQ(wheel.add(std::numeric_limits<int>::min()), -20);
}

} // namespace
} // namespace zofra
