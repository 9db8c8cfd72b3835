// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosRoom.h"
#include "stations/AppLanguage.h"

#include <QList>
#include <QString>

namespace zofra {

/// How a room is shown among `rooms`: its name, and as much more as tells it from others of the same name.
[[nodiscard]] QString roomTitle(const SonosRoom& room, const QList<SonosRoom>& rooms);

/// "This Mac", and "Everywhere (All Rooms)".
[[nodiscard]] QString localTargetTitle(AppLanguage language);
[[nodiscard]] QString everywhereTitle(AppLanguage language);

/// Why there is no room to choose.
[[nodiscard]] QString accessDeniedText(AppLanguage language);
[[nodiscard]] QString scanningText(AppLanguage language);
[[nodiscard]] QString nothingFoundText(AppLanguage language);

} // namespace zofra
