// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosRoom.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace zofra {

/// The rooms as the JSON text that is kept between runs. Absent optional fields are left out.
[[nodiscard]] QByteArray encodeRooms(const QList<SonosRoom>& rooms);

/// The rooms that `json` spells. A missing or wrongly typed field, or a speaker without any usable address,
/// makes the whole text unreadable.
[[nodiscard]] std::optional<QList<SonosRoom>> decodeRooms(const QByteArray& json);

} // namespace zofra
