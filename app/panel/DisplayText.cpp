// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/DisplayText.h"

#include <QStringView>

#include <algorithm>

namespace zofra {

namespace {

constexpr qsizetype longestText = 400;

// Marks, embeddings, overrides and isolates: harmless where they were written, misleading inside our own
// lines.
bool turnsDirection(char16_t c) {
    return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

bool isBlank(QChar c) {
    return c.category() == QChar::Other_Control || c.category() == QChar::Separator_Line ||
           c.category() == QChar::Separator_Paragraph;
}

} // namespace

QString displayText(const QString& text) {
    QString shown;
    shown.reserve(std::min(text.size(), longestText + 1));
    for (const QChar c : text) {
        if (shown.size() >= longestText) {
            if (shown.back().isHighSurrogate())
                shown.chop(1);
            shown.append(QChar(0x2026));
            break;
        }
        if (!turnsDirection(c.unicode()))
            shown.append(isBlank(c) ? QChar(u' ') : c);
    }
    return shown;
}

QString menuText(const QString& text) {
    return displayText(text).replace(QLatin1Char('&'), QLatin1String("&&"));
}

QString toolTipText(const QString& text) {
    // A tool tip guesses whether it was given markup; given escaped markup it has nothing to guess.
    return QLatin1String("<p>") + displayText(text).toHtmlEscaped() + QLatin1String("</p>");
}

} // namespace zofra
