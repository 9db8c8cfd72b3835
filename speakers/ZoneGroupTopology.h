// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/PlayerTopologyMember.h"
#include "speakers/SonosSpeaker.h"

#include <QList>
#include <QString>

namespace zofra::NetworkPlayerProtocol {

/// A report with more members than this is refused: elements can be nested so that they multiply.
inline constexpr qsizetype maxTopologyMembers = 4096;

/// The members that an answer to GetZoneGroupState reports; satellites come before their member.
[[nodiscard]] QList<PlayerTopologyMember> topology(const QString& response);

/// One record per `uuid`, in speaker order. The later answer wins, but who was called invisible stays so.
[[nodiscard]] QList<PlayerTopologyMember> merge(const QList<QList<PlayerTopologyMember>>& answers);

} // namespace zofra::NetworkPlayerProtocol

namespace zofra {

/// Changes a speaker as the household's topology has it.
void applyTopology(SonosSpeaker& speaker, const PlayerTopologyMember& member);

} // namespace zofra
