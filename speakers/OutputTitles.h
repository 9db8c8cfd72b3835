// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosRoom.h"

#include <QList>
#include <QString>

namespace zofra {

/// How a room is shown among `rooms`: its name, and as much more as tells it from others of the same name.
[[nodiscard]] QString roomTitle(const SonosRoom& room, const QList<SonosRoom>& rooms);

} // namespace zofra
