// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace zofra {

/// `text` as one harmless line: control characters, line separators and what overrides the direction of
/// writing are written as escapes (`\n`, `\x1b`, `\u202e`), so that a song's title cannot forge a line or
/// steer a terminal.
[[nodiscard]] QString visibleText(const QString& text);

/// `text` cut to at most `maxLength` UTF-16 units, the last one an ellipsis when something was cut.
[[nodiscard]] QString cutText(const QString& text, qsizetype maxLength);

} // namespace zofra
