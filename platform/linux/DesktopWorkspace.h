// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Workspace.h"
#include "platform/linux/DBusCalls.h"
#include "platform/linux/OwnEnvironment.h"
#include "platform/linux/SessionBus.h"
#include "platform/linux/XdgFolders.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <utility>

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
    explicit DesktopWorkspace(SessionBus& bus)
        : DesktopWorkspace(bus, startDetached,
                           QFile::exists(u"/.flatpak-info"_qs) ? Sandbox::portalOnly : Sandbox::none) {}
    /// For tests.
    DesktopWorkspace(SessionBus& bus, Spawn spawn, Sandbox sandbox)
        : m_bus(bus)
        , m_spawn(std::move(spawn))
        , m_sandbox(sandbox) {}

    void open(const QUrl& url) override {
        if (url.toString() ==
            u"x-apple.systempreferences:com.apple.preference.security?Privacy_LocalNetwork") {
            if (const auto command = networkSettingsCommand())
                m_spawn(command->first(), command->mid(1));
            else
                openHelp();
            return;
        }
        const auto scheme = url.scheme();
        if (!url.isValid() || (scheme != u"https" && scheme != u"http" && scheme != u"mailto"))
            return;
        const auto program = opener();
        if (program.isEmpty() || !m_spawn(program, {url.toString(QUrl::FullyEncoded)}))
            openThroughPortal(url);
    }

    /// The command that shows this desktop's network settings, the program as an absolute path; nothing where
    /// none is known or installed.
    [[nodiscard]] static std::optional<QStringList> networkSettingsCommand() {
        for (const auto& desktop : xdg::currentDesktops()) {
            for (const auto& known : knownSettings) {
                if (desktop.compare(QLatin1String(known.desktop), Qt::CaseInsensitive) != 0)
                    continue;
                const auto program = xdg::findProgram(QLatin1String(known.program));
                if (program.isEmpty())
                    continue;
                QStringList command{program};
                if (known.argument)
                    command += QLatin1String(known.argument);
                return command;
            }
        }
        return std::nullopt;
    }

private:
    struct NetworkSettings {
        /// As in $XDG_CURRENT_DESKTOP.
        const char* desktop;
        const char* program;
        const char* argument;
    };

    /// Of the entries for a desktop the first that is installed is taken.
    static constexpr NetworkSettings knownSettings[] = {
        {"GNOME", "gnome-control-center", "network"},
        {"Unity", "unity-control-center", "network"},
        {"KDE", "systemsettings", "kcm_networkmanagement"},
        {"KDE", "systemsettings5", "kcm_networkmanagement"},
        {"KDE", "kcmshell6", "kcm_networkmanagement"},
        {"KDE", "kcmshell5", "kcm_networkmanagement"},
        {"XFCE", "nm-connection-editor", nullptr},
        {"XFCE", "xfce4-settings-manager", nullptr},
        {"X-Cinnamon", "cinnamon-settings", "network"},
        {"MATE", "nm-connection-editor", nullptr},
        {"LXQt", "nm-connection-editor", nullptr},
        {"LXDE", "nm-connection-editor", nullptr},
        {"Budgie", "budgie-control-center", "network"},
    };

    static bool startDetached(const QString& program, const QStringList& arguments) {
        QProcess process;
        process.setProgram(program);
        process.setArguments(arguments);
        process.setProcessEnvironment(OwnEnvironment::forOthers());
        // Standard output is ours: what others say there would look like our own lines.
        process.setStandardInputFile(QProcess::nullDevice());
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        return process.startDetached();
    }
    /// The desktop's own opener; empty where there is none, or it cannot be reached.
    [[nodiscard]] QString opener() const {
        return m_sandbox == Sandbox::none ? xdg::findProgram(u"xdg-open"_qs) : QString();
    }
    /// What this installation says about the local network.
    void openHelp() {
        const auto page =
            QStandardPaths::locate(QStandardPaths::GenericDataLocation, u"doc/zofrazofra/speakers.md"_qs);
        const auto program = opener();
        if (!page.isEmpty() && !program.isEmpty())
            m_spawn(program, {page});
    }
    void openThroughPortal(const QUrl& url) {
        // Not waited for: the portal asks the user, and nothing here depends on the answer.
        if (const auto connection = m_bus.connection())
            connection->send(dbus::methodCall("org.freedesktop.portal.Desktop",
                                              "/org/freedesktop/portal/desktop",
                                              "org.freedesktop.portal.OpenURI", "OpenURI",
                                              {QString(), url.toString(QUrl::FullyEncoded), QVariantMap()}));
    }

    SessionBus& m_bus;
    Spawn m_spawn;
    Sandbox m_sandbox;
};

} // namespace zofra
