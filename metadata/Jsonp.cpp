// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/Jsonp.h"

#include <QStringView>

namespace zofra {

namespace {

bool isCallbackName(QStringView name) {
    bool first = true;
    bool mayBeMarked = false;
    for (qsizetype i = 0; i < name.size(); ++i) {
        char32_t character = name[i].unicode();
        if (name[i].isHighSurrogate() && i + 1 < name.size() && name[i + 1].isLowSurrogate()) {
            character = QChar::surrogateToUcs4(name[i], name[i + 1]);
            ++i;
        }
        const bool isLetter = QChar::isLetter(character);
        const bool isDigit = QChar::isDigit(character);
        const bool isSign = character == U'_' || character == U'$';
        const bool isMark = mayBeMarked && QChar::isMark(character);
        if (!isLetter && !isSign && (first || (!isDigit && !isMark && character != U'.')))
            return false;
        mayBeMarked = isLetter || isDigit || isMark;
        first = false;
    }
    return !first;
}

} // namespace

std::optional<QString> unwrapJSONP(const QString& text) {
    auto call = QStringView(text).trimmed();
    if (call.isEmpty())
        return std::nullopt;
    if (call.startsWith(u'{') || call.startsWith(u'['))
        return call.toString();
    while (call.endsWith(u';'))
        call = call.chopped(1).trimmed();
    if (!call.endsWith(u')'))
        return std::nullopt;
    const auto parenthesis = call.indexOf(u'(');
    if (parenthesis < 0 || !isCallbackName(call.first(parenthesis).trimmed()))
        return std::nullopt;
    const auto inner = call.sliced(parenthesis + 1).chopped(1).trimmed();
    if (inner.isEmpty())
        return std::nullopt;
    return inner.toString();
}

} // namespace zofra
