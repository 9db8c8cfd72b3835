// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSet>
#include <QStringList>
#include <QUrl>

#include <algorithm>

namespace zofra {

/// Whether `a` stands before `b` in plain character order: by code point, case-sensitive, no locale.
[[nodiscard]] inline bool plainlyBefore(QStringView a, QStringView b) {
    // The bytes of UTF-8 stand in the order of the code points; units of UTF-16 do not.
    return a.toUtf8() < b.toUtf8();
}

/// The absolute texts of these addresses in that order.
[[nodiscard]] inline QStringList sortedAddresses(const QSet<QUrl>& addresses) {
    QStringList texts;
    for (const auto& address : addresses)
        texts += QString::fromLatin1(address.toEncoded(QUrl::FullyEncoded));
    std::ranges::sort(texts, plainlyBefore);
    return texts;
}

} // namespace zofra
