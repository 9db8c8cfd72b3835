// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/PanelFindings.h"
#include "app/doctor/ProgramFindings.h"
#include "platform/linux/ApplicationBus.h"
#include "platform/linux/DBusCalls.h"
#include "platform/linux/tray/PanelWatch.h"

#include <QDBusConnection>
#include <QJsonDocument>

namespace zofra::doctor {

/// What the session bus can tell; waits a few seconds at most for each answer. Belongs to a background
/// thread.
class DesktopProbe {
public:
    explicit DesktopProbe(const QDBusConnection& bus)
        : m_bus(bus) {}

    /// Fills in what is known of the panel.
    void ask(DesktopFacts& facts) const {
        facts.hasWatcher = hasName(watcher);
        if (!facts.hasWatcher)
            return;
        facts.session.panelProgram = processName(processBehind(watcher));
        auto call =
            dbus::propertyCall(watcher, "/StatusNotifierWatcher", watcher, "IsStatusNotifierHostRegistered");
        call.setAutoStartService(false);
        const auto value = dbus::propertyIn(replyTo(call));
        // A watcher that does not say is taken for a panel, as the status item does.
        facts.hasPanel = !value.isValid() || value.toBool();
    }

    /// Asks the running program, where there is one, for its state.
    void ask(ProgramFacts& facts) const {
        facts.hasMediaName = hasName(u"org.mpris.MediaPlayer2.zofrazofra"_qs);
        facts.isRunning = hasName(ApplicationBus::name);
        if (!facts.isRunning)
            return;
        facts.processId = processBehind(ApplicationBus::name);
        const auto text = RunningApplication(m_bus).status().value_or(QString());
        const auto document = QJsonDocument::fromJson(text.toUtf8());
        if (document.isObject())
            facts.status = document.object();
    }

private:
    static inline const QString watcher = u"org.kde.StatusNotifierWatcher"_qs;

    [[nodiscard]] QDBusMessage replyTo(const QDBusMessage& call) const {
        constexpr int patienceMilliseconds = 3000;
        return m_bus.call(call, QDBus::Block, patienceMilliseconds);
    }
    /// What the bus itself answers; invalid on an error.
    [[nodiscard]] QVariant askBus(const char* method, const QString& name) const {
        const auto reply = replyTo(dbus::busCall(method, {name}));
        return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
    }
    [[nodiscard]] bool hasName(const QString& name) const { return askBus("NameHasOwner", name).toBool(); }
    [[nodiscard]] uint processBehind(const QString& name) const {
        return askBus("GetConnectionUnixProcessID", name).toUInt();
    }

    QDBusConnection m_bus;
};

} // namespace zofra::doctor
