// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace zofra {

/// `text` as one line for a log: what libraries and peers say may hold line breaks, control characters or be
/// endless.
[[nodiscard]] QString oneLine(const QString& text);

} // namespace zofra
