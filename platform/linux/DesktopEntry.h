// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <algorithm>
#include <iterator>

namespace zofra::desktopentry {

/// What may follow a backslash, and what each stands for.
inline constexpr QStringView escapeLetters = u"sntr\\";
inline constexpr QStringView escapeMeanings = u" \n\t\r\\";

/// `text` as a value of type string.
[[nodiscard]] inline QString escapedString(const QString& text) {
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const auto escape = escapeMeanings.indexOf(text[i]);
        const bool isInnerBlank = text[i] == u' ' && i > 0 && i + 1 < text.size();
        if (escape < 0 || isInnerBlank)
            result += text[i];
        else
            (result += u'\\') += escapeLetters[escape];
    }
    return result;
}
/// The text that a value of type string stands for.
[[nodiscard]] inline QString unescapedString(const QString& text) {
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'\\' || i + 1 == text.size()) {
            result += text[i];
            continue;
        }
        const auto escape = escapeLetters.indexOf(text[++i]);
        result += escape < 0 ? text[i] : escapeMeanings[escape];
    }
    return result;
}
/// One program or argument for the value of Exec, quoted where it must be, escaped as a string as well.
[[nodiscard]] inline QString execArgument(const QString& argument) {
    static const QString reserved = u" \t\n\"'\\><~|&;$*?#()`="_qs;
    QString text = argument;
    // A percent sign begins a field code.
    text.replace(u'%', u"%%"_qs);
    if (!text.isEmpty() && std::ranges::none_of(text, [](QChar c) { return reserved.contains(c); }))
        return text;
    QString quoted = u"\""_qs;
    for (const auto c : std::as_const(text)) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += u'\\';
        quoted += c;
    }
    return escapedString(quoted + u'"');
}

/// `text` without the blanks around it; other white space may be part of a name.
[[nodiscard]] inline QString withoutBlanks(const QString& text) {
    const auto isBlank = [](QChar c) { return c == u' ' || c == u'\t' || c == u'\r'; };
    const auto first = std::find_if_not(text.cbegin(), text.cend(), isBlank);
    const auto last = std::find_if_not(text.crbegin(), std::make_reverse_iterator(first), isBlank).base();
    return QString(first, last - first);
}
/// The values of the group [Desktop Entry], unescaped; the first of two with the same key counts.
[[nodiscard]] inline QHash<QString, QString> mainGroup(const QByteArray& file) {
    QHash<QString, QString> values;
    bool isInside = false;
    for (const auto& raw : file.split('\n')) {
        const auto line = withoutBlanks(QString::fromUtf8(raw));
        if (line.startsWith(u'[')) {
            isInside = line == u"[Desktop Entry]";
            continue;
        }
        const auto equals = line.indexOf(u'=');
        if (!isInside || equals < 1 || line.startsWith(u'#'))
            continue;
        const auto key = withoutBlanks(line.left(equals));
        if (!values.contains(key))
            values.insert(key, unescapedString(withoutBlanks(line.mid(equals + 1))));
    }
    return values;
}

} // namespace zofra::desktopentry
