// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/VisibleText.h"

namespace zofra {
namespace {

bool overridesDirection(char16_t c) {
    return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

bool isLineSeparator(char16_t c) {
    return c == 0x2028 || c == 0x2029;
}

bool isControl(char16_t c) {
    return c < 0x20 || (c >= 0x7F && c <= 0x9F);
}

QString escaped(char16_t c) {
    switch (c) {
    case u'\n':
        return QStringLiteral("\\n");
    case u'\r':
        return QStringLiteral("\\r");
    case u'\t':
        return QStringLiteral("\\t");
    default:
        break;
    }
    if (isControl(c))
        return QStringLiteral("\\x") + QString::number(uint(c), 16).rightJustified(2, u'0');
    return QStringLiteral("\\u") + QString::number(uint(c), 16).rightJustified(4, u'0');
}

} // namespace

QString visibleText(const QString& text) {
    QString result;
    result.reserve(text.size());
    for (const auto c : text) {
        const auto unit = c.unicode();
        if (isControl(unit) || isLineSeparator(unit) || overridesDirection(unit))
            result += escaped(unit);
        else
            result += c;
    }
    return result;
}

QString cutText(const QString& text, qsizetype maxLength) {
    if (text.size() <= maxLength)
        return text;
    auto length = maxLength - 1;
    // Not through the middle of a pair.
    if (length > 0 && text[length - 1].isHighSurrogate())
        --length;
    return text.left(length) + QChar(0x2026);
}

} // namespace zofra
