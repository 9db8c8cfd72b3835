// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/QuotedList.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

TEST(QuotedList, PutsEachTextInQuotes) {
    EXPECT_EQ(quotedList({}), QStringLiteral("[]"));
    EXPECT_EQ(quotedList({QStringLiteral("a")}), QStringLiteral("[\"a\"]"));
    EXPECT_EQ(quotedList({QStringLiteral("a"), QString(), QStringLiteral("é")}),
              QStringLiteral("[\"a\", \"\", \"é\"]"));
}

TEST(QuotedList, KeepsTextsWithinTheirQuotes) {
    EXPECT_EQ(quotedList({QStringLiteral("a\"b\\c'd")}), QStringLiteral("[\"a\\\"b\\\\c\\'d\"]"));
    EXPECT_EQ(quotedList({QStringLiteral("\n\r\t") + QChar(0)}), QStringLiteral("[\"\\n\\r\\t\\0\"]"));
    EXPECT_EQ(quotedList({QString(QChar(0x1B)) + QChar(0x7F)}), QStringLiteral("[\"\\u{1B}\\u{7F}\"]"));
    EXPECT_EQ(quotedList({QString(QChar(0x01))}), QStringLiteral("[\"\\u{01}\"]"));
}

TEST(SortedAddresses, AreAbsoluteTextsInPlainOrder) {
    EXPECT_EQ(
        sortedAddresses({QUrl(QStringLiteral("http://10.0.0.9:1400/x")),
                         QUrl(QStringLiteral("https://a/é b")),
                         QUrl(QStringLiteral("http://10.0.0.10:1400/x"))}),
        (QStringList{QStringLiteral("http://10.0.0.10:1400/x"), QStringLiteral("http://10.0.0.9:1400/x"),
                     QStringLiteral("https://a/%C3%A9%20b")}));
}

} // namespace
} // namespace zofra
