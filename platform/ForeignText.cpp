// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ForeignText.h"

#include <QRegularExpression>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace zofra {
namespace {

constexpr QChar ellipsis(0x2026);

bool isControl(QChar c) {
    return c.category() == QChar::Other_Control;
}

bool isControlOrBreak(QChar c) {
    return isControl(c) || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

/// Embeddings, overrides, isolates and their ends.
bool overridesDirection(QChar c) {
    return (c >= QChar(0x202A) && c <= QChar(0x202E)) || (c >= QChar(0x2066) && c <= QChar(0x2069));
}

/// Those and the marks: harmless where they were written, misleading inside our own lines.
bool turnsDirection(QChar c) {
    return overridesDirection(c) || c == QChar(0x061C) || c == QChar(0x200E) || c == QChar(0x200F);
}

QString replaced(QString text, bool (*isMeant)(QChar), QChar replacement) {
    std::ranges::replace_if(text, isMeant, replacement);
    return text;
}

QString doubled(QString text, QChar mark) {
    return text.replace(mark, QString(2, mark));
}

/// The first `length` units, fewer rather than half a character, and an ellipsis.
QString cutAt(const QString& text, qsizetype length) {
    const bool isInsidePair = length > 0 && text[length - 1].isHighSurrogate();
    return text.left(isInsidePair ? length - 1 : length) + ellipsis;
}

QString hexadecimal(QChar c, int width) {
    return QString::number(c.unicode(), 16).rightJustified(width, u'0');
}

/// The escape that every language has for `c`; empty when there is none.
QString commonEscape(QChar c) {
    const auto place = QStringView(u"\n\r\t").indexOf(c);
    return place < 0 ? QString() : u"\\"_qs + QStringView(u"nrt")[place];
}

QString visible(QChar c) {
    if (!isControlOrBreak(c) && !overridesDirection(c))
        return c;
    if (auto escape = commonEscape(c); !escape.isEmpty())
        return escape;
    return isControl(c) ? u"\\x"_qs + hexadecimal(c, 2) : u"\\u"_qs + hexadecimal(c, 4);
}

QString quotable(QChar c) {
    if (auto escape = commonEscape(c); !escape.isEmpty())
        return escape;
    if (c.isNull())
        return u"\\0"_qs;
    if (c == u'\\' || c == u'"' || c == u'\'')
        return u"\\"_qs + c;
    return c < u' ' || c == QChar(0x7F) ? u"\\u{"_qs + hexadecimal(c, 2).toUpper() + u'}' : QString(c);
}

/// The closing characters that are missing in `text`, in the right order.
QString missingClosers(const QString& text) {
    constexpr QChar closesEmbedding(0x202C);
    constexpr QChar closesIsolate(0x2069);
    QString stack;
    for (const QChar c : text) {
        if (!overridesDirection(c))
            continue;
        if (c == closesEmbedding) {
            if (stack.endsWith(closesEmbedding))
                stack.chop(1);
        } else if (c == closesIsolate) {
            // Ending an isolate ends every embedding inside it as well.
            if (stack.contains(closesIsolate))
                stack.truncate(stack.lastIndexOf(closesIsolate));
        } else {
            stack.append(c < closesIsolate && c >= QChar(0x2066) ? closesIsolate : closesEmbedding);
        }
    }
    std::ranges::reverse(stack);
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
    return cut < text.size() ? text.left(cut).trimmed() + ellipsis : text;
}

} // namespace

QString visibleText(const QString& text) {
    QString result;
    result.reserve(text.size());
    for (const auto c : text)
        result += visible(c);
    return result;
}

QString cutText(const QString& text, qsizetype maxLength) {
    return text.size() <= maxLength ? text : cutAt(text, maxLength - 1);
}

QString oneLine(const QString& text) {
    constexpr qsizetype longest = 300;
    const auto isInvisible = [](QChar c) { return isControl(c) || c.category() == QChar::Other_Format; };
    return replaced(text.left(longest), isInvisible, u' ').simplified();
}

QString maskedText(QString text) {
    return replaced(std::move(text), isControlOrBreak, u'?');
}

QString quotedList(const QStringList& texts) {
    QStringList all;
    for (const auto& text : texts) {
        QString quoted(u'"');
        for (const auto c : text)
            quoted += quotable(c);
        all += quoted + u'"';
    }
    return u'[' + all.join(u", "_qs) + u']';
}

QString withoutLineBreaks(QString text) {
    static const QRegularExpression breaks(u"[\\n\\r\\v\\f\\x{0085}\\x{2028}\\x{2029}]+"_qs);
    return text.replace(breaks, u" "_qs);
}

QString shownLine(const QString& text, int maxCharacters) {
    // Nobody sees the end of a very long text; do not walk through all of it.
    const auto line =
        elided(replaced(text.left(qsizetype{maxCharacters} * 8), isControlOrBreak, u' '), maxCharacters);
    return line + missingClosers(line);
}

QString shownLines(const QString& text) {
    constexpr qsizetype maxLines = 8;
    QStringList lines;
    for (const QString& line : text.split(u'\n').mid(0, maxLines))
        lines += shownLine(line);
    return lines.join(u'\n');
}

QString busMenuLabel(const QString& text) {
    return doubled(shownLine(text), u'_');
}

QString widgetMenuText(const QString& text) {
    return doubled(shownLine(text), u'&');
}

QString displayText(const QString& text) {
    constexpr qsizetype longest = 400;
    QString shown;
    for (const QChar c : text) {
        if (shown.size() > longest)
            return cutAt(shown, longest);
        if (!turnsDirection(c))
            shown += isControlOrBreak(c) ? QChar(u' ') : c;
    }
    return shown.size() > longest ? cutAt(shown, longest) : shown;
}

QString menuText(const QString& text) {
    return doubled(displayText(text), u'&');
}

QString toolTipText(const QString& text) {
    // A tool tip guesses whether it was given markup; given escaped markup it has nothing to guess.
    return u"<p>"_qs + displayText(text).toHtmlEscaped() + u"</p>"_qs;
}

} // namespace zofra
