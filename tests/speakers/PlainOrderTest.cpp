// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlainOrder.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

TEST(SortedAddressesTest, AreAbsoluteTextsInPlainOrder) {
    EXPECT_EQ(
        sortedAddresses({QUrl(QStringLiteral("http://10.0.0.9:1400/x")),
                         QUrl(QStringLiteral("https://a/é b")),
                         QUrl(QStringLiteral("http://10.0.0.10:1400/x"))}),
        (QStringList{QStringLiteral("http://10.0.0.10:1400/x"), QStringLiteral("http://10.0.0.9:1400/x"),
                     QStringLiteral("https://a/%C3%A9%20b")}));
}

} // namespace
} // namespace zofra
