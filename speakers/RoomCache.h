// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/JsonRecord.h"
#include "speakers/SonosRoom.h"

#include <QByteArray>
#include <QJsonDocument>

#include <algorithm>
#include <optional>

namespace zofra {

/// What is kept of a network that invents players; a large household is far below both.
inline constexpr qsizetype maxCachedRooms = 256;
inline constexpr qsizetype maxCacheBytes = 262'144;

/// The rooms as JSON, without absent optional fields and without rooms beyond the limits.
[[nodiscard]] inline QByteArray encodeRooms(const QList<SonosRoom>& rooms) {
    QByteArray json;
    for (const auto& room : rooms.first(std::min(rooms.size(), maxCachedRooms))) {
        const auto text = QJsonDocument(toJson(room).toObject()).toJson(QJsonDocument::Compact);
        if (json.size() + text.size() + 2 <= maxCacheBytes)
            json += (json.isEmpty() ? "" : ",") + text;
    }
    return '[' + json + ']';
}

/// The rooms that `json` spells; absent when a field is missing or wrong, or a speaker has no usable address.
[[nodiscard]] inline std::optional<QList<SonosRoom>> decodeRooms(const QByteArray& json) {
    const auto document = QJsonDocument::fromJson(json);
    auto rooms = document.isArray() ? fromJson<QList<SonosRoom>>(document.array()) : std::nullopt;
    // The text can be edited by hand, so an address that is none must not get as far as a request.
    const auto hasAddress = [](const SonosSpeaker& speaker) {
        return speaker.descriptionURL || !usualDescriptionAddress(speaker.ip).host().isEmpty();
    };
    const auto isUsable = [&](const SonosRoom& room) {
        return hasAddress(room.coordinator) && std::ranges::all_of(room.speakers, hasAddress);
    };
    return rooms && std::ranges::all_of(*rooms, isUsable) ? rooms : std::nullopt;
}

} // namespace zofra
