// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/DisplayText.h"
#include "tests/support/PrintQt.h"

#include <QTextDocument>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

TEST(DisplayText, TakesLineBreaksAndControlsOut) {
    EXPECT_EQ(displayText(u"a\nb\tc\u0000d\u2028e\u0085f"_qs), u"a b c d e f"_qs);
}

TEST(DisplayText, DropsWhatTurnsTheDirection) {
    EXPECT_EQ(displayText(u"\u202Eevil\u202C \u2066x\u2069 \u200Fy\u061C"_qs), u"evil x y"_qs);
    // Text that runs from right to left by itself stays.
    EXPECT_EQ(displayText(u"\u05E9\u05DC\u05D5\u05DD"_qs), u"\u05E9\u05DC\u05D5\u05DD"_qs);
}

TEST(DisplayText, IsCutWhenItIsEndless) {
    const QString shown = displayText(QString(1024 * 1024, u'x'));
    EXPECT_EQ(shown.size(), 401);
    EXPECT_TRUE(shown.endsWith(QChar(0x2026)));
    // Not in the middle of a character outside of the first plane.
    const QString emoji = displayText(QString(399, u'x') + u"\U0001F3B5\U0001F3B5"_qs);
    EXPECT_EQ(emoji, QString(399, u'x') + QChar(0x2026));
}

TEST(DisplayText, KeepsAmpersandsInMenus) {
    EXPECT_EQ(menuText(u"Hits & Pop &&"_qs), u"Hits && Pop &&&&"_qs);
}

TEST(DisplayText, IsNeverMarkupInToolTips) {
    const QString text = u"<b>Tom</b> & <img src='file:///etc/passwd'>"_qs;
    QTextDocument document;
    document.setHtml(toolTipText(text));
    EXPECT_EQ(document.toPlainText(), text);
}

} // namespace
} // namespace zofra::test
