// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SongNotifier.h"

#include "app/Settings.h"
#include "app/SongHistory.h"
#include "platform/ForeignText.h"

namespace zofra {

SongNotifier::SongNotifier(Notifications& notifications, const DefaultsStore& defaults,
                           std::function<bool()> isPanelOpen)
    : m_notifications(notifications)
    , m_defaults(defaults)
    , m_isPanelOpen(std::move(isPanelOpen)) {}

void SongNotifier::show(const RadioState& state) {
    const auto song = songHeard(state);
    if (!song)
        return;
    std::pair now{state.station.displayName(), *song};
    if (now == m_seen)
        return;
    m_seen = std::move(now);
    if (isOn(m_defaults, announceSongsKey, false) && !m_isPanelOpen())
        m_notifications.show(shownLine(m_seen.second), m_seen.first);
}

} // namespace zofra
