// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace zofra {

/// Text from the network, made safe to show on one line: line breaks, tabs and control characters become
/// blanks, characters that turn the direction of their surroundings are dropped, and what is longer than 400
/// characters is cut with an ellipsis.
[[nodiscard]] QString displayText(const QString& text);

/// The same for a menu entry: an ampersand stays an ampersand.
[[nodiscard]] QString menuText(const QString& text);

/// The same for a tool tip: shown as written, never read as markup.
[[nodiscard]] QString toolTipText(const QString& text);

} // namespace zofra
