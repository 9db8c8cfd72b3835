// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosSpeaker.h"

#include <QCollator>
#include <QList>
#include <QLocale>

#include <algorithm>
#include <vector>

namespace zofra {

/// One room offered to the user. A plain value: copied, compared and hashed member by member.
struct SonosRoom {
    /// The coordinator's room name. Never reassigned.
    QString name;
    SonosSpeaker coordinator;
    /// In speaker order, the coordinator included.
    QList<SonosSpeaker> speakers;

    /// What identifies the room: its coordinator's `id`.
    [[nodiscard]] const QString& id() const { return coordinator.id; }

    static void visitFields(auto& room, auto&& field) {
        field("name", room.name);
        field("coordinator", room.coordinator);
        field("speakers", room.speakers);
    }
    friend bool operator==(const SonosRoom&, const SonosRoom&) = default;
    friend size_t qHash(const SonosRoom& room, size_t seed = 0) {
        return qHashMulti(seed, room.name, room.coordinator, room.speakers);
    }
};

/// Room order: by name as people of the locale have it, case not counting, then by the coordinator's `id` in
/// plain character order. One thread at a time; make one for each use.
class RoomOrder {
public:
    explicit RoomOrder(const QLocale& locale = QLocale())
        : m_collator(locale) {
        m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    }
    [[nodiscard]] bool operator()(const SonosRoom& a, const SonosRoom& b) const {
        const int order = m_collator.compare(a.name, b.name);
        return order != 0 ? order < 0 : plainlyBefore(a.id(), b.id());
    }

private:
    QCollator m_collator;
};

/// How a room is shown among `rooms`: its name, and as much more as tells it from others of the same name.
[[nodiscard]] inline QString roomTitle(const SonosRoom& room, const QList<SonosRoom>& rooms) {
    std::vector<const SonosRoom*> others;
    for (const auto& other : rooms) {
        if (other.name == room.name && other.id() != room.id())
            others.push_back(&other);
    }
    if (others.empty())
        return room.name;
    const auto namesUs = [](const std::optional<QString>& text) {
        return text && (text->compare(u"Zofra Zofra", Qt::CaseInsensitive) == 0 ||
                        text->compare(u"Zofra Pi Player", Qt::CaseInsensitive) == 0);
    };
    const auto isOwn = [&](const SonosSpeaker& player) {
        return namesUs(player.manufacturer) || namesUs(player.modelName) || player.isZofra();
    };
    const auto& player = room.coordinator;
    QString title = room.name + (isOwn(player) ? u" (Zofra)"_qs : u" (Sonos)"_qs);
    std::erase_if(others, [&](const auto* other) { return isOwn(other->coordinator) != isOwn(player); });
    if (others.empty())
        return title;
    // Where its player is, or the player's id when another of these rooms is there, too.
    const bool isShared =
        std::ranges::any_of(others, [&](const auto* other) { return other->coordinator.ip == player.ip; });
    return title + u" – "_qs + (isShared ? player.id : player.ip);
}

} // namespace zofra
