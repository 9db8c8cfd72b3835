// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosRoom.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace zofra {

/// What is kept of a network that invents players; a large household is far below both.
inline constexpr qsizetype maxCachedRooms = 256;
inline constexpr qsizetype maxCacheBytes = 262'144;

/// The rooms as the JSON text that is kept between runs. Absent optional fields are left out, and so are
/// rooms beyond the limits.
[[nodiscard]] QByteArray encodeRooms(const QList<SonosRoom>& rooms);

/// The rooms that `json` spells. A missing or wrongly typed field, or a speaker without any usable address,
/// makes the whole text unreadable.
[[nodiscard]] std::optional<QList<SonosRoom>> decodeRooms(const QByteArray& json);

} // namespace zofra
