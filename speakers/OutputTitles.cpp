// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/OutputTitles.h"

#include <algorithm>

namespace zofra {

namespace {

bool isOwn(const SonosSpeaker& speaker) {
    const auto names = [](const std::optional<QString>& text) {
        return text && (text->compare(QLatin1String("Zofra Zofra"), Qt::CaseInsensitive) == 0 ||
                        text->compare(QLatin1String("Zofra Pi Player"), Qt::CaseInsensitive) == 0);
    };
    return names(speaker.manufacturer) || names(speaker.modelName) || speaker.isZofra();
}

QString brand(const SonosRoom& room) {
    return isOwn(room.coordinator) ? QStringLiteral("Zofra") : QStringLiteral("Sonos");
}

/// Where the room's player is, unless another of these rooms is there, too: players are known apart by id
/// only.
QString distinguishingText(const SonosRoom& room, const QList<SonosRoom>& others) {
    const bool isShared = std::any_of(others.begin(), others.end(), [&room](const SonosRoom& other) {
        return other.coordinator.ip == room.coordinator.ip;
    });
    return isShared ? room.coordinator.id : room.coordinator.ip;
}

} // namespace

QString roomTitle(const SonosRoom& room, const QList<SonosRoom>& rooms) {
    QList<SonosRoom> sameName;
    std::copy_if(rooms.begin(), rooms.end(), std::back_inserter(sameName), [&room](const SonosRoom& other) {
        return other.id() != room.id() && other.name == room.name;
    });
    if (sameName.isEmpty())
        return room.name;
    QList<SonosRoom> sameBrand;
    std::copy_if(sameName.begin(), sameName.end(), std::back_inserter(sameBrand),
                 [&room](const SonosRoom& other) { return brand(other) == brand(room); });
    const QString title = room.name + QStringLiteral(" (") + brand(room) + u')';
    return sameBrand.isEmpty() ? title : title + QStringLiteral(" – ") + distinguishingText(room, sameBrand);
}

} // namespace zofra
