// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/IdleInhibitor.h"
#include "platform/linux/SessionBus.h"

#include <QDBusUnixFileDescriptor>
#include <QObject>

#include <memory>
#include <optional>

namespace zofra {

/// Keeps the computer awake by the login manager's inhibitor, which ends with the descriptor that it gives.
/// Without a login manager nothing is kept.
class LogindInhibitor final : public IdleInhibitor {
public:
    /// `systemBus` outlives it.
    explicit LogindInhibitor(SessionBus& systemBus)
        : m_bus(systemBus) {}

    void setInhibited(bool isInhibited) override;

private:
    void ask();

    SessionBus& m_bus;
    /// There while it is wanted; ends what was asked for when it ends.
    std::unique_ptr<QObject> m_wish;
    std::optional<QDBusUnixFileDescriptor> m_lock;
};

} // namespace zofra
