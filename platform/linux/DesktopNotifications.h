// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Notifications.h"
#include "platform/linux/SessionBus.h"

#include <QObject>

namespace zofra {

/// Messages through the session's notification server (org.freedesktop.Notifications). Nothing waits for it.
class DesktopNotifications final : public Notifications {
public:
    /// `sessionBus` outlives it.
    explicit DesktopNotifications(SessionBus& sessionBus)
        : m_bus(sessionBus) {}

    void show(const QString& title, const QString& text) override;

private:
    SessionBus& m_bus;
    /// The message that is shown, as the server calls it; 0 is none.
    quint32 m_shown = 0;
    /// Ends what was asked for when it ends.
    QObject m_context;
};

} // namespace zofra
