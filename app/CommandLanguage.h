// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/AppLanguage.h"

namespace zofra {

/// The language in which the command line speaks: the one chosen in the program, else the system's, else
/// English.
[[nodiscard]] AppLanguage commandLanguage();

} // namespace zofra
