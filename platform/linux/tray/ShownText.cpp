// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/ShownText.h"

#include <QStringList>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace zofra {

namespace {

constexpr qsizetype maxLines = 8;

bool isBreakOrControl(QChar character) {
    return character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

bool opensEmbedding(char16_t c) {
    return c == u'\u202A' || c == u'\u202B' || c == u'\u202D' || c == u'\u202E';
}
bool opensIsolate(char16_t c) {
    return c >= u'\u2066' && c <= u'\u2068';
}
constexpr char16_t closesEmbedding = u'\u202C';
constexpr char16_t closesIsolate = u'\u2069';

/// The closing characters that are missing in `text`, in the right order.
QString missingClosers(const QString& text) {
    QString stack;
    for (const QChar character : text) {
        const char16_t c = character.unicode();
        if (opensEmbedding(c)) {
            stack.append(QChar(closesEmbedding));
        } else if (opensIsolate(c)) {
            stack.append(QChar(closesIsolate));
        } else if (c == closesEmbedding && stack.endsWith(QChar(closesEmbedding))) {
            stack.chop(1);
        } else if (c == closesIsolate && stack.contains(QChar(closesIsolate))) {
            // Ending an isolate ends every embedding inside it as well.
            stack.truncate(stack.lastIndexOf(QChar(closesIsolate)));
        }
    }
    std::reverse(stack.begin(), stack.end());
    return stack;
}

QString elided(const QString& text, int maxCharacters) {
    if (text.size() <= maxCharacters)
        return text;
    // Cut between what a reader sees as characters, not inside of one.
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype cut = 0;
    for (int seen = 0; seen < maxCharacters - 1; ++seen) {
        const qsizetype next = finder.toNextBoundary();
        // One "character" of countless combining marks is cut all the same.
        if (next < 0 || next > qsizetype{maxCharacters} * 4)
            break;
        cut = next;
    }
    if (cut >= text.size())
        return text;
    return text.left(cut).trimmed() + QChar(u'\u2026');
}

} // namespace

QString shownLine(const QString& text, int maxCharacters) {
    // Nobody sees the end of a very long text; do not walk through all of it.
    QString line = text.left(qsizetype{maxCharacters} * 8);
    for (QChar& character : line) {
        if (isBreakOrControl(character))
            character = QLatin1Char(' ');
    }
    line = elided(line, maxCharacters);
    return line + missingClosers(line);
}

QString shownLines(const QString& text) {
    QStringList lines;
    for (const QString& line : text.split(QLatin1Char('\n')).mid(0, maxLines))
        lines.append(shownLine(line));
    return lines.join(QLatin1Char('\n'));
}

QString busMenuLabel(const QString& text) {
    return shownLine(text).replace(QLatin1Char('_'), QLatin1String("__"));
}

QString widgetMenuText(const QString& text) {
    return shownLine(text).replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace zofra
