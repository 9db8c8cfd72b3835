// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

namespace zofra {

/// Whether `a` stands before `b` in plain character order: by code point, case-sensitive, no locale.
[[nodiscard]] bool plainlyBefore(QStringView a, QStringView b);

} // namespace zofra
