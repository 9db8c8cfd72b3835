// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace zofra {

/// The window system to use, as a name for $QT_QPA_PLATFORM: what the user set there, else the one of this
/// session that answers; absent when none does. The toolkit itself would end the program without a display.
[[nodiscard]] std::optional<QString> usableDisplay();

} // namespace zofra
