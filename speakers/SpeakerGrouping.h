// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosRoom.h"

namespace zofra {

/// Players that play one stream together. A plain value.
struct PlayerPlaybackGroup {
    /// Receives the stream; the others join it.
    SonosSpeaker leader;
    QList<SonosSpeaker> followers;

    friend bool operator==(const PlayerPlaybackGroup&, const PlayerPlaybackGroup&) = default;
    friend size_t qHash(const PlayerPlaybackGroup& group, size_t seed = 0) {
        return qHashMulti(seed, group.leader, group.followers);
    }
};

namespace NetworkPlayerProtocol {

/// How to play on these speakers together: other makers' players as one group, own players each alone.
[[nodiscard]] QList<PlayerPlaybackGroup> playbackGroups(const QList<SonosSpeaker>& speakers);

/// The rooms that these speakers make, in room order.
[[nodiscard]] QList<SonosRoom> rooms(const QList<SonosSpeaker>& speakers);

} // namespace NetworkPlayerProtocol

} // namespace zofra
