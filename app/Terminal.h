// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace zofra {

/// What the program answers to whoever started it.
enum ExitStatus : int { fine = 0, failed = 1, misused = 2 };

/// One line on standard error, and the status to end with.
int refuse(ExitStatus status, const QString& line);
/// One line or more on standard output. `failed` when nobody takes it.
int print(const QString& text);

} // namespace zofra
