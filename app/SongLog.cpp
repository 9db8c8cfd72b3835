// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SongLog.h"

#include "app/Settings.h"

#include <utility>

namespace zofra {

SongLog::SongLog(OwnFile& file, const DefaultsStore& defaults, Clock clock)
    : m_file(file)
    , m_defaults(defaults)
    , m_clock(std::move(clock)) {}

void SongLog::show(const RadioState& state) {
    if (!songHeard(state) || !isOn(m_defaults, keepHistoryKey, true))
        return;
    if (!m_history)
        m_history.emplace(m_file.read());
    if (m_history->note(state, m_clock()))
        m_file.write(m_history->toJson());
}

} // namespace zofra
