// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosSpeaker.h"

#include <QCollator>
#include <QHashFunctions>
#include <QList>
#include <QString>

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

    friend bool operator==(const SonosRoom&, const SonosRoom&) = default;
};

[[nodiscard]] size_t qHash(const SonosRoom& room, size_t seed = 0);

/// What compares room names: the user's locale, case not counting. One thread at a time; make one for each
/// use.
[[nodiscard]] QCollator roomNameCollator(const QLocale& locale = QLocale());

/// Room order: by name, then by the coordinator's `id` in plain character order.
[[nodiscard]] bool comesBefore(const SonosRoom& a, const SonosRoom& b, const QCollator& collator);

} // namespace zofra
