// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosSpeaker.h"

#include <QList>

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

/// Changes a speaker as the household's topology has it.
void applyTopology(SonosSpeaker& speaker, const PlayerTopologyMember& member);

namespace NetworkPlayerProtocol {

/// A report with more members than this is refused: elements can be nested so that they multiply.
inline constexpr qsizetype maxTopologyMembers = 4096;

/// The members that an answer to GetZoneGroupState reports; satellites come before their member.
[[nodiscard]] QList<PlayerTopologyMember> topology(const QString& response);

/// One record per `uuid`, in speaker order. The later answer wins, but who was called invisible stays so.
[[nodiscard]] QList<PlayerTopologyMember> merge(const QList<QList<PlayerTopologyMember>>& answers);

} // namespace NetworkPlayerProtocol

} // namespace zofra
