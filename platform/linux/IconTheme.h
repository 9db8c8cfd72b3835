// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace zofra::icontheme {

/// Where the program's own icon theme is; empty when those who look into the usual places find it anyway,
/// absent where there is none.
[[nodiscard]] std::optional<QString> unusualFolder();
/// The file with the program's own icon; empty where there is none.
[[nodiscard]] QString programIcon();

} // namespace zofra::icontheme
