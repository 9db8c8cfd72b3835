// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"
#include "platform/DefaultsStore.h"
#include "platform/Notifications.h"

#include <QString>

#include <functional>
#include <utility>

namespace zofra {

/// Announces each new song in a message of the desktop's, where the settings ask for it and no panel shows it
/// anyway. Main thread only.
class SongNotifier {
public:
    /// All of it outlives the notifier.
    SongNotifier(Notifications& notifications, const DefaultsStore& defaults,
                 std::function<bool()> isPanelOpen);

    /// The state has changed.
    void show(const RadioState& state);

private:
    Notifications& m_notifications;
    const DefaultsStore& m_defaults;
    std::function<bool()> m_isPanelOpen;
    /// Station and song that were seen last.
    std::pair<QString, QString> m_seen;
};

} // namespace zofra
