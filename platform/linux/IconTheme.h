// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace zofra::icontheme {

/// The program's own icon theme, beside the program before it is installed and after; absent where there is
/// none.
[[nodiscard]] std::optional<QString> folder();
/// The same for those who look into the usual places anyway: empty when it is one of these.
[[nodiscard]] std::optional<QString> unusualFolder();
/// The file with the program's own icon; empty where there is none.
[[nodiscard]] QString programIcon();

} // namespace zofra::icontheme
