// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SonosRoom.h"

#include "speakers/PlainOrder.h"

#include <algorithm>

namespace zofra {

namespace {

bool isOwn(const SonosSpeaker& speaker) {
    const auto names = [](const std::optional<QString>& text) {
        return text && (text->compare(u"Zofra Zofra", Qt::CaseInsensitive) == 0 ||
                        text->compare(u"Zofra Pi Player", Qt::CaseInsensitive) == 0);
    };
    return names(speaker.manufacturer) || names(speaker.modelName) || speaker.isZofra();
}

QString brand(const SonosRoom& room) {
    return isOwn(room.coordinator) ? u"Zofra"_qs : u"Sonos"_qs;
}

/// Where the room's player is, or its id when another of these rooms is there, too.
QString distinguishingText(const SonosRoom& room, const QList<SonosRoom>& others) {
    const bool isShared = std::ranges::any_of(
        others, [&room](const SonosRoom& other) { return other.coordinator.ip == room.coordinator.ip; });
    return isShared ? room.coordinator.id : room.coordinator.ip;
}

} // namespace

RoomOrder::RoomOrder(const QLocale& locale)
    : m_collator(locale) {
    m_collator.setCaseSensitivity(Qt::CaseInsensitive);
}

bool RoomOrder::operator()(const SonosRoom& a, const SonosRoom& b) const {
    const int order = m_collator.compare(a.name, b.name);
    return order != 0 ? order < 0 : plainlyBefore(a.id(), b.id());
}

QString roomTitle(const SonosRoom& room, const QList<SonosRoom>& rooms) {
    auto others = rooms;
    others.removeIf(
        [&room](const SonosRoom& other) { return other.id() == room.id() || other.name != room.name; });
    if (others.isEmpty())
        return room.name;
    const QString title = room.name + u" ("_qs + brand(room) + u')';
    others.removeIf([&room](const SonosRoom& other) { return brand(other) != brand(room); });
    return others.isEmpty() ? title : title + u" – "_qs + distinguishingText(room, others);
}

} // namespace zofra
