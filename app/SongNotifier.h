// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Settings.h"
#include "app/SongHistory.h"
#include "platform/ForeignText.h"
#include "platform/Notifications.h"

#include <QString>

#include <functional>
#include <utility>

namespace zofra {

/// Announces new songs as the desktop's messages, if the settings say so and no panel is open. Main thread.
class SongNotifier {
public:
    /// All of it outlives the notifier.
    SongNotifier(Notifications& notifications, const DefaultsStore& defaults,
                 std::function<bool()> isPanelOpen)
        : m_notifications(notifications)
        , m_defaults(defaults)
        , m_isPanelOpen(std::move(isPanelOpen)) {}

    /// The state has changed.
    void show(const RadioState& state) {
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

private:
    Notifications& m_notifications;
    const DefaultsStore& m_defaults;
    std::function<bool()> m_isPanelOpen;
    /// Station and song that were seen last.
    std::pair<QString, QString> m_seen;
};

} // namespace zofra
