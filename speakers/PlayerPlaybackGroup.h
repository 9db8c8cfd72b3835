// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosSpeaker.h"

#include <QHashFunctions>
#include <QList>

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

} // namespace zofra
