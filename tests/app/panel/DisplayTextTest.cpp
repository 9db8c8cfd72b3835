// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ForeignText.h"
#include "tests/support/PrintQt.h"

#include <QTextDocument>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

TEST(DisplayTextTest, IsNeverMarkupInToolTips) {
    const QString text = u"<b>Tom</b> & <img src='file:///etc/passwd'>"_qs;
    QTextDocument document;
    document.setHtml(toolTipText(text));
    EXPECT_EQ(document.toPlainText(), text);
}

} // namespace
} // namespace zofra::test
