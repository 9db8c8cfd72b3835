// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace zofra {

/// The user's languages in order of preference, as the system names them ("nl_BE.UTF-8"): $LANGUAGE, then the
/// locale of messages ($LC_ALL, $LC_MESSAGES, $LANG). Empty for the "C" locale, for which $LANGUAGE does not
/// count either.
[[nodiscard]] QStringList preferredLanguages();

} // namespace zofra
