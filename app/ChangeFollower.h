// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/DBusNameOwner.h"
#include "platform/linux/DBusSignal.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

namespace zofra {

/// `--follow`: prints a line whenever what a status bar shows of the running program changes, and goes on
/// when that ends and starts again. Main thread, with an application object and no running event loop.
class ChangeFollower {
public:
    enum class Form { text, json };

    ChangeFollower(const QDBusConnection& bus, Form form);
    /// Until nobody reads any more, or the bus is gone. Answers the exit status.
    [[nodiscard]] int run();

private:
    void ownerChanged(const QString& owner);
    void show(const QString& json);

    QDBusConnection m_bus;
    Form m_form;
    /// What was printed last.
    QString m_line;
    /// Ends what was asked for when it ends.
    QObject m_context;
    DBusNameOwner m_owner;
    DBusSignal m_changed;
    DBusSignal m_ended;
};

} // namespace zofra
