// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Options.h"

#include <QVariantMap>

namespace zofra {

/// `options` as they travel to the running program: what is asked for has an entry, nothing else has.
[[nodiscard]] QVariantMap toVariantMap(const Options& options);

/// What came over the bus, from whomever: options, or the one line that says what is wrong, in the sender's
/// language.
[[nodiscard]] Result<Options> fromVariantMap(const QVariantMap& map);

} // namespace zofra
