// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHashFunctions>
#include <QString>
#include <QUrl>

#include <optional>

namespace zofra {

/// One entry of a household's topology report. A plain value; no field is ever reassigned.
struct PlayerTopologyMember {
    /// As written in the report.
    QString uuid;
    std::optional<QUrl> descriptionURL;
    QString zoneName;
    bool isVisible = true;
    /// The group's leader; empty when the report names none.
    QString coordinator;

    friend bool operator==(const PlayerTopologyMember&, const PlayerTopologyMember&) = default;
    friend size_t qHash(const PlayerTopologyMember& member, size_t seed = 0) {
        seed = qHashMulti(seed, member.uuid, member.descriptionURL.has_value(),
                          member.descriptionURL.value_or(QUrl()));
        return qHashMulti(seed, member.zoneName, member.isVisible, member.coordinator);
    }
};

} // namespace zofra
