// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/PlayerPlaybackGroup.h"
#include "speakers/SonosRoom.h"
#include "speakers/SonosSpeaker.h"

#include <QList>

namespace zofra::NetworkPlayerProtocol {

/// How to play on these speakers together: other makers' players as one group, own players each alone.
[[nodiscard]] QList<PlayerPlaybackGroup> playbackGroups(const QList<SonosSpeaker>& speakers);

/// The rooms that these speakers make, in room order.
[[nodiscard]] QList<SonosRoom> rooms(const QList<SonosSpeaker>& speakers);

} // namespace zofra::NetworkPlayerProtocol
