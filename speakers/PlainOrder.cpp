// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlainOrder.h"

#include <algorithm>

namespace zofra {

namespace {

/// Moves the surrogates behind every other code unit, so that code units compare as the code points they
/// stand for.
char16_t rank(QChar character) {
    const char16_t unit = character.unicode();
    if (unit < 0xD800)
        return unit;
    return static_cast<char16_t>(unit < 0xE000 ? unit + 0x2000 : unit - 0x0800);
}

} // namespace

bool plainlyBefore(QStringView a, QStringView b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](QChar x, QChar y) { return rank(x) < rank(y); });
}

QStringList sortedAddresses(const QSet<QUrl>& addresses) {
    QStringList texts;
    for (const auto& address : addresses)
        texts += QString::fromLatin1(address.toEncoded(QUrl::FullyEncoded));
    std::sort(texts.begin(), texts.end(), plainlyBefore);
    return texts;
}

} // namespace zofra
