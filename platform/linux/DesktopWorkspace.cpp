// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DesktopWorkspace.h"

#include "platform/linux/DBusCalls.h"
#include "platform/linux/OwnEnvironment.h"
#include "platform/linux/XdgFolders.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QVariantMap>

#include <utility>

namespace zofra {
namespace {

const auto privacyPage = u"x-apple.systempreferences:com.apple.preference.security?Privacy_LocalNetwork"_qs;

bool startDetached(const QString& program, const QStringList& arguments) {
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

struct NetworkSettings {
    /// As in $XDG_CURRENT_DESKTOP.
    const char* desktop;
    const char* program;
    const char* argument;
};

/// Of the entries for a desktop the first that is installed is taken.
constexpr NetworkSettings knownSettings[] = {
    {"GNOME", "gnome-control-center", "network"},       {"Unity", "unity-control-center", "network"},
    {"KDE", "systemsettings", "kcm_networkmanagement"}, {"KDE", "systemsettings5", "kcm_networkmanagement"},
    {"KDE", "kcmshell6", "kcm_networkmanagement"},      {"KDE", "kcmshell5", "kcm_networkmanagement"},
    {"XFCE", "nm-connection-editor", nullptr},          {"XFCE", "xfce4-settings-manager", nullptr},
    {"X-Cinnamon", "cinnamon-settings", "network"},     {"MATE", "nm-connection-editor", nullptr},
    {"LXQt", "nm-connection-editor", nullptr},          {"LXDE", "nm-connection-editor", nullptr},
    {"Budgie", "budgie-control-center", "network"},
};

bool isAddressForOthers(const QUrl& url) {
    const auto scheme = url.scheme();
    return url.isValid() && (scheme == u"https" || scheme == u"http" || scheme == u"mailto");
}

} // namespace

DesktopWorkspace::DesktopWorkspace(SessionBus& bus)
    : DesktopWorkspace(bus, startDetached,
                       QFile::exists(u"/.flatpak-info"_qs) ? Sandbox::portalOnly : Sandbox::none) {}

DesktopWorkspace::DesktopWorkspace(SessionBus& bus, Spawn spawn, Sandbox sandbox)
    : m_bus(bus)
    , m_spawn(std::move(spawn))
    , m_sandbox(sandbox) {}

void DesktopWorkspace::open(const QUrl& url) {
    if (url.toString() == privacyPage) {
        if (const auto command = networkSettingsCommand())
            m_spawn(command->first(), command->mid(1));
        else
            openHelp();
        return;
    }
    if (!isAddressForOthers(url))
        return;
    const auto opener = m_sandbox == Sandbox::none ? xdg::findProgram(u"xdg-open"_qs) : QString();
    if (opener.isEmpty() || !m_spawn(opener, {url.toString(QUrl::FullyEncoded)}))
        openThroughPortal(url);
}

std::optional<QStringList> DesktopWorkspace::networkSettingsCommand() {
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

void DesktopWorkspace::openHelp() {
    const auto page =
        QStandardPaths::locate(QStandardPaths::GenericDataLocation, u"doc/zofrazofra/speakers.md"_qs);
    const auto opener = m_sandbox == Sandbox::none ? xdg::findProgram(u"xdg-open"_qs) : QString();
    if (!page.isEmpty() && !opener.isEmpty())
        m_spawn(opener, {page});
}

void DesktopWorkspace::openThroughPortal(const QUrl& url) {
    auto connection = m_bus.connection();
    if (!connection)
        return;
    // Not waited for: the portal asks the user, and nothing here depends on the answer.
    connection->send(dbus::methodCall("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                                      "org.freedesktop.portal.OpenURI", "OpenURI",
                                      {QString(), url.toString(QUrl::FullyEncoded), QVariantMap()}));
}

} // namespace zofra
