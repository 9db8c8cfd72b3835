// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Workspace.h"
#include "platform/linux/SessionBus.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace zofra {

/// The desktop around the program: web and mail addresses go to the desktop's own opener (or, from a sandbox,
/// to the portal), the address of the local-network privacy page to the desktop's network settings, or where
/// there are none to the page that says what to allow. Main thread only.
class DesktopWorkspace final : public Workspace {
public:
    /// Starts a program that lives on by itself; false when it could not be started.
    using Spawn = std::function<bool(const QString& program, const QStringList& arguments)>;
    enum class Sandbox { none, portalOnly };

    /// `bus` must outlive it.
    explicit DesktopWorkspace(SessionBus& bus);
    /// For tests.
    DesktopWorkspace(SessionBus& bus, Spawn spawn, Sandbox sandbox);

    void open(const QUrl& url) override;

    /// The command that shows this desktop's network settings, the program as an absolute path; nothing where
    /// none is known or installed.
    [[nodiscard]] static std::optional<QStringList> networkSettingsCommand();

private:
    /// What this installation says about the local network.
    void openHelp();
    void openThroughPortal(const QUrl& url);

    SessionBus& m_bus;
    Spawn m_spawn;
    Sandbox m_sandbox;
};

} // namespace zofra
