// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/SessionBus.h"

#include <QDBusUnixFileDescriptor>
#include <QObject>

#include <memory>
#include <optional>

namespace zofra {

/// Keeps a computer that nobody touches from going to sleep, by the login manager's inhibitor, which ends
/// with the descriptor that it gives. Without a login manager nothing is kept. Main thread only.
class LogindInhibitor {
public:
    /// `systemBus` outlives it.
    explicit LogindInhibitor(SessionBus& systemBus)
        : m_bus(systemBus) {}

    /// Cheap; may be called often.
    void setInhibited(bool isInhibited);

private:
    SessionBus& m_bus;
    /// There while it is wanted; ends what was asked for when it ends.
    std::unique_ptr<QObject> m_wish;
    std::optional<QDBusUnixFileDescriptor> m_lock;
};

} // namespace zofra
