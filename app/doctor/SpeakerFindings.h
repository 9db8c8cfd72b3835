// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Finding.h"
#include "speakers/SonosRoom.h"
#include "speakers/SpeakerDiscovery.h"

#include <QMap>
#include <QUrl>

#include <vector>

namespace zofra::doctor {

/// What became of the search on one interface.
struct InterfaceSearch {
    InterfaceInfo interface;
    struct Send {
        QString address;
        /// 0 when it went out.
        int error = 0;
    };
    std::vector<Send> sends;
    /// Addresses of descriptions that the answers named.
    QSet<QUrl> answers;
};

/// One run of the search for players.
struct SpeakerFacts {
    enum class State { searching, done, notWanted };
    State state = State::searching;
    std::vector<InterfaceSearch> searches;
    QList<SonosRoom> rooms;
    /// Descriptions that were read at addresses nobody had named: by asking every one.
    QSet<QUrl> scanned;
    /// Requests to players that the system did not let out, and the errno of the last.
    int refusedRequests = 0;
    int lastRefusal = 0;
};

/// One finding for each interface, then one for the players.
[[nodiscard]] Findings judgeSpeakers(const SpeakerFacts& facts, AppLanguage language = AppLanguage::en);

} // namespace zofra::doctor
