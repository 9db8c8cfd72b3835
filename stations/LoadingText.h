// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/AppLanguage.h"

#include <QString>

namespace zofra {

/// What stands in the place of a song until the first one is known.
[[nodiscard]] QString loadingText(AppLanguage language);

} // namespace zofra
