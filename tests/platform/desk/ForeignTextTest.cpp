// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ForeignText.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

TEST(VisibleTextTest, leavesTextAlone) {
    const auto text = QString::fromUtf8("Variété – \xE2\x80\x8E\xD7\xA9 & <b> \\ %s \xF0\x9F\x8E\xB5");
    EXPECT_EQ(visibleText(text), text);
}

TEST(VisibleTextTest, showsWhatWouldSteerATerminal) {
    EXPECT_EQ(visibleText(QStringLiteral("a\nb\rc\td")), QStringLiteral("a\\nb\\rc\\td"));
    EXPECT_EQ(visibleText(QString::fromUtf8("\x1b[31m\x07\x7f")), QStringLiteral("\\x1b[31m\\x07\\x7f"));
    EXPECT_EQ(visibleText(QString(QChar(0x9B))), QStringLiteral("\\x9b"));
    EXPECT_EQ(visibleText(QString(QChar(u'\0'))), QStringLiteral("\\x00"));
    EXPECT_EQ(visibleText(QString(QChar(0x2028)) + QChar(0x202E) + QChar(0x2066)),
              QStringLiteral("\\u2028\\u202e\\u2066"));
}

TEST(VisibleTextTest, isCutWithAnEllipsis) {
    EXPECT_EQ(cutText(QStringLiteral("abcd"), 4), QStringLiteral("abcd"));
    EXPECT_EQ(cutText(QStringLiteral("abcde"), 4), QStringLiteral("abc") + QChar(0x2026));
    // The note needs two units; half of it is not left.
    EXPECT_EQ(cutText(QString::fromUtf8("ab\xF0\x9F\x8E\xB5"
                                        "cd"),
                      4),
              QStringLiteral("ab") + QChar(0x2026));
}

TEST(QuotedListTest, PutsEachTextInQuotes) {
    EXPECT_EQ(quotedList({}), QStringLiteral("[]"));
    EXPECT_EQ(quotedList({QStringLiteral("a")}), QStringLiteral("[\"a\"]"));
    EXPECT_EQ(quotedList({QStringLiteral("a"), QString(), QStringLiteral("é")}),
              QStringLiteral("[\"a\", \"\", \"é\"]"));
}

TEST(QuotedListTest, KeepsTextsWithinTheirQuotes) {
    EXPECT_EQ(quotedList({QStringLiteral("a\"b\\c'd")}), QStringLiteral("[\"a\\\"b\\\\c\\'d\"]"));
    EXPECT_EQ(quotedList({QStringLiteral("\n\r\t") + QChar(0)}), QStringLiteral("[\"\\n\\r\\t\\0\"]"));
    EXPECT_EQ(quotedList({QString(QChar(0x1B)) + QChar(0x7F)}), QStringLiteral("[\"\\u{1B}\\u{7F}\"]"));
    EXPECT_EQ(quotedList({QString(QChar(0x01))}), QStringLiteral("[\"\\u{01}\"]"));
}

TEST(MaskedTextTest, HidesWhatWouldBreakALine) {
    EXPECT_EQ(maskedText(u"a\nb\u2028c\u0085d é"_qs), u"a?b?c?d é"_qs);
}

TEST(OneLineTest, SimplifiesWhatALibrarySays) {
    EXPECT_EQ(oneLine(u"  no\r\n\u202Esuch \t host "_qs), u"no such host"_qs);
    EXPECT_EQ(oneLine(QString(1000, u'x')).size(), 300);
}

TEST(WithoutLineBreaksTest, LeavesOneBlankForARunOfThem) {
    EXPECT_EQ(withoutLineBreaks(u"a\r\n\v\f\u0085\u2028\u2029b\tc"_qs), u"a b\tc"_qs);
}

TEST(ShownTextTest, AnOrdinaryTextIsShownAsItIs) {
    EXPECT_EQ(shownLine(u"Artist – Song (feat. Ünïcödé) 🎵"_qs), u"Artist – Song (feat. Ünïcödé) 🎵"_qs);
    EXPECT_EQ(shownLine(QString()), QString());
}

TEST(ShownTextTest, BreaksAndControlsAreBlanks) {
    EXPECT_EQ(shownLine(u"a\nb\r\nc\td\x1B[1m\x7F\x85\u2028e\u2029f"_qs), u"a b  c d [1m   e f"_qs);
    EXPECT_EQ(shownLine(QString(QChar(u'\0')) + u'x'), u" x"_qs);
}

TEST(ShownTextTest, DirectionalFormattingEndsWithTheText) {
    EXPECT_EQ(shownLine(u"\u202Eevil"_qs), u"\u202Eevil\u202C"_qs);
    EXPECT_EQ(shownLine(u"\u2067a\u202Bb"_qs), u"\u2067a\u202Bb\u202C\u2069"_qs);
    EXPECT_EQ(shownLine(u"\u2066a\u2069 b"_qs), u"\u2066a\u2069 b"_qs) << "already closed";
    EXPECT_EQ(shownLine(u"\u2068\u202Ea\u2069b"_qs), u"\u2068\u202Ea\u2069b"_qs)
        << "the end of an isolate ends what is inside";
    EXPECT_EQ(shownLine(u"a\u202C\u2069b"_qs), u"a\u202C\u2069b"_qs) << "closers alone do nothing";
}

TEST(ShownTextTest, LongTextsAreElidedBetweenCharacters) {
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

TEST(ShownTextTest, LinesAreKeptApartAndBounded) {
    EXPECT_EQ(shownLines(u"a\tb\nc"_qs), u"a b\nc"_qs);
    EXPECT_EQ(shownLines(u"\u202Ea\nb"_qs), u"\u202Ea\u202C\nb"_qs) << "closed within its own line";
    EXPECT_EQ(shownLines(QString(100, u'\n')).count(u'\n'), 7);
}

TEST(ShownTextTest, UnderscoresAndAmpersandsMarkNothing) {
    EXPECT_EQ(busMenuLabel(u"_a__b & <i>"_qs), u"__a____b & <i>"_qs);
    EXPECT_EQ(widgetMenuText(u"_a & b && <i>"_qs), u"_a && b &&&& <i>"_qs);
    EXPECT_EQ(busMenuLabel(QString(200, u'_')).count(u'_'), 2 * 119) << "elided first, escaped then";
}

TEST(DisplayTextTest, TakesLineBreaksAndControlsOut) {
    EXPECT_EQ(displayText(u"a\nb\tc\u0000d\u2028e\u0085f"_qs), u"a b c d e f"_qs);
}

TEST(DisplayTextTest, DropsWhatTurnsTheDirection) {
    EXPECT_EQ(displayText(u"\u202Eevil\u202C \u2066x\u2069 \u200Fy\u061C"_qs), u"evil x y"_qs);
    // Text that runs from right to left by itself stays.
    EXPECT_EQ(displayText(u"\u05E9\u05DC\u05D5\u05DD"_qs), u"\u05E9\u05DC\u05D5\u05DD"_qs);
}

TEST(DisplayTextTest, IsCutWhenItIsEndless) {
    const QString shown = displayText(QString(1024 * 1024, u'x'));
    EXPECT_EQ(shown.size(), 401);
    EXPECT_TRUE(shown.endsWith(QChar(0x2026)));
    // Not in the middle of a character outside of the first plane.
    const QString emoji = displayText(QString(399, u'x') + u"\U0001F3B5\U0001F3B5"_qs);
    EXPECT_EQ(emoji, QString(399, u'x') + QChar(0x2026));
}

TEST(DisplayTextTest, KeepsAmpersandsInMenus) {
    EXPECT_EQ(menuText(u"Hits & Pop &&"_qs), u"Hits && Pop &&&&"_qs);
}

} // namespace
} // namespace zofra
