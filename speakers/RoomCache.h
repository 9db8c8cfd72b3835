// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosRoom.h"

#include <QByteArray>

#include <optional>

namespace zofra {

/// What is kept of a network that invents players; a large household is far below both.
inline constexpr qsizetype maxCachedRooms = 256;
inline constexpr qsizetype maxCacheBytes = 262'144;

/// The rooms as JSON, without absent optional fields and without rooms beyond the limits.
[[nodiscard]] QByteArray encodeRooms(const QList<SonosRoom>& rooms);

/// The rooms that `json` spells; absent when a field is missing or wrong, or a speaker has no usable address.
[[nodiscard]] std::optional<QList<SonosRoom>> decodeRooms(const QByteArray& json);

} // namespace zofra
