// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/RoomCache.h"

#include "platform/JsonRecord.h"
#include "speakers/PlayerAddress.h"

#include <QJsonDocument>

#include <algorithm>

namespace zofra {

namespace {

/// The text can be edited by hand, so an address that is none must not get as far as a request.
bool hasAddress(const SonosSpeaker& speaker) {
    return speaker.descriptionURL || !usualDescriptionAddress(speaker.ip).host().isEmpty();
}

bool isUsable(const SonosRoom& room) {
    return hasAddress(room.coordinator) && std::ranges::all_of(room.speakers, hasAddress);
}

} // namespace

QByteArray encodeRooms(const QList<SonosRoom>& rooms) {
    QByteArray json;
    for (const auto& room : rooms.first(std::min(rooms.size(), maxCachedRooms))) {
        const auto text = QJsonDocument(toJson(room).toObject()).toJson(QJsonDocument::Compact);
        if (json.size() + text.size() + 2 <= maxCacheBytes)
            json += (json.isEmpty() ? "" : ",") + text;
    }
    return '[' + json + ']';
}

std::optional<QList<SonosRoom>> decodeRooms(const QByteArray& json) {
    const auto document = QJsonDocument::fromJson(json);
    auto rooms = document.isArray() ? fromJson<QList<SonosRoom>>(document.array()) : std::nullopt;
    return rooms && std::ranges::all_of(*rooms, isUsable) ? rooms : std::nullopt;
}

} // namespace zofra
