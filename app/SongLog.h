// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/SongHistory.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/OwnFile.h"

#include <optional>

namespace zofra {

/// Keeps the history of songs in its file, unless the settings say otherwise. Main thread only.
class SongLog {
public:
    /// All of it outlives the log. The file is read when there is something to add.
    SongLog(OwnFile& file, const DefaultsStore& defaults, Clock clock);

    /// The state has changed.
    void show(const RadioState& state);

private:
    OwnFile& m_file;
    const DefaultsStore& m_defaults;
    Clock m_clock;
    std::optional<SongHistory> m_history;
};

} // namespace zofra
