// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/QuotedList.h"

#include "speakers/PlainOrder.h"

#include <algorithm>

namespace zofra {

namespace {

QString escaped(QChar character) {
    switch (character.unicode()) {
    case u'\0':
        return QStringLiteral("\\0");
    case u'\t':
        return QStringLiteral("\\t");
    case u'\n':
        return QStringLiteral("\\n");
    case u'\r':
        return QStringLiteral("\\r");
    case u'\\':
    case u'"':
    case u'\'':
        return QStringLiteral("\\") + character;
    default:
        break;
    }
    const bool isControl = character.unicode() < 0x20 || character.unicode() == 0x7F;
    if (!isControl)
        return character;
    return QStringLiteral("\\u{%1}")
        .arg(character.unicode(), 2, 16, QLatin1Char('0'))
        .toUpper()
        .replace(u'U', u'u');
}

QString quoted(const QString& text) {
    QString result(u'"');
    for (const auto character : text)
        result += escaped(character);
    return result + u'"';
}

} // namespace

QString quotedList(const QStringList& texts) {
    QStringList all;
    for (const auto& text : texts)
        all.append(quoted(text));
    return u'[' + all.join(QStringLiteral(", ")) + u']';
}

QStringList sortedAddresses(const QSet<QUrl>& addresses) {
    QStringList texts;
    for (const auto& address : addresses)
        texts.append(QString::fromLatin1(address.toEncoded(QUrl::FullyEncoded)));
    std::sort(texts.begin(), texts.end(),
              [](const QString& a, const QString& b) { return plainlyBefore(a, b); });
    return texts;
}

} // namespace zofra
