// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace zofra {

// What is installed beside the program, made from its options.

[[nodiscard]] QString bashCompletion();
[[nodiscard]] QString zshCompletion();
[[nodiscard]] QString fishCompletion();
/// The options of the manual page, in its markup.
[[nodiscard]] QString manualOptions();

} // namespace zofra
