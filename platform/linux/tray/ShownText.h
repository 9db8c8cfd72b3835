// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace zofra {

/// Longest menu line or title that is shown; what is longer ends in an ellipsis.
inline constexpr int maxShownCharacters = 120;
/// Longest text beside an icon in a panel.
inline constexpr int maxLabelCharacters = 80;

/// `text` as one line that can be shown anywhere: control characters and line breaks are blanks, directional
/// formatting ends with the text, and what is longer than `maxCharacters` is elided.
[[nodiscard]] QString shownLine(const QString& text, int maxCharacters = maxShownCharacters);
/// The same for each line of a text of at most eight lines.
[[nodiscard]] QString shownLines(const QString& text);

/// A label of the menu protocol, in which a single underscore would mark a letter.
[[nodiscard]] QString busMenuLabel(const QString& text);
/// The text of a widget's menu item, in which a single ampersand would mark a letter.
[[nodiscard]] QString widgetMenuText(const QString& text);

} // namespace zofra
