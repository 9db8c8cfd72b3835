// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace zofra {

// What songs, stations, players, files and libraries say is shown, never obeyed. Every place that shows it
// takes one of these forms. Pure functions, callable from any thread.

// For a log or a terminal.

/// `text` as one harmless line: control characters, line separators and what overrides the direction of
/// writing are written as escapes (`\n`, `\x1b`, `\u202e`), so that a song's title cannot forge a line or
/// steer a terminal.
[[nodiscard]] QString visibleText(const QString& text);
/// `text` cut to at most `maxLength` UTF-16 units, the last one an ellipsis when something was cut.
[[nodiscard]] QString cutText(const QString& text, qsizetype maxLength);
/// A library's words as part of a line: 300 units at most, white space simplified, what is invisible blank.
[[nodiscard]] QString oneLine(const QString& text);
/// `text` with a question mark for each control character and line separator.
[[nodiscard]] QString maskedText(QString text);
/// The texts in double quotes between square brackets; quotes, backslashes and control characters inside are
/// escaped, so that what a peer sent stays within its quotes.
[[nodiscard]] QString quotedList(const QStringList& texts);

// For a tool tip or a panel of the desktop, which lay out text by themselves.

/// Longest menu line or title that is shown; what is longer ends in an ellipsis.
inline constexpr int maxShownCharacters = 120;
/// Longest text beside an icon in a panel.
inline constexpr int maxLabelCharacters = 80;

/// `text` with a blank for each run of line breaks: what a song brings must not look like lines of ours.
[[nodiscard]] QString withoutLineBreaks(QString text);
/// `text` as one line that can be shown anywhere: control characters and line breaks are blanks, directional
/// formatting ends with the text, and what is longer than `maxCharacters` is elided.
[[nodiscard]] QString shownLine(const QString& text, int maxCharacters = maxShownCharacters);
/// The same for each line of a text of at most eight lines.
[[nodiscard]] QString shownLines(const QString& text);
/// The same for a label of the menu protocol, in which a single underscore would mark a letter.
[[nodiscard]] QString busMenuLabel(const QString& text);
/// The same for a widget's menu item, in which a single ampersand would mark a letter.
[[nodiscard]] QString widgetMenuText(const QString& text);

// For our own window, which mixes foreign text with its own.

/// `text` on one line: line breaks, tabs and control characters are blanks, characters that turn the
/// direction of their surroundings are dropped, and after 400 characters it is cut with an ellipsis.
[[nodiscard]] QString displayText(const QString& text);
/// The same for a menu entry: an ampersand stays an ampersand.
[[nodiscard]] QString menuText(const QString& text);
/// The same for a tool tip: shown as written, never read as markup.
[[nodiscard]] QString toolTipText(const QString& text);

} // namespace zofra
