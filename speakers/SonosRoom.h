// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosSpeaker.h"

#include <QCollator>
#include <QList>
#include <QLocale>

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
    explicit RoomOrder(const QLocale& locale = QLocale());
    [[nodiscard]] bool operator()(const SonosRoom& a, const SonosRoom& b) const;

private:
    QCollator m_collator;
};

/// How a room is shown among `rooms`: its name, and as much more as tells it from others of the same name.
[[nodiscard]] QString roomTitle(const SonosRoom& room, const QList<SonosRoom>& rooms);

} // namespace zofra
