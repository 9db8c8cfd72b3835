// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Options.h"

#include <QVariantMap>

#include <variant>

namespace zofra {

/// The options of a second start as they travel to the running program.
[[nodiscard]] QVariantMap toVariantMap(const Options& options);

/// The same at the other end, or the one line that says what is wrong with them: anyone on the bus can send
/// some.
[[nodiscard]] std::variant<Options, QString> fromVariantMap(const QVariantMap& map);

} // namespace zofra
