// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/XdgLoginItem.h"

#include "platform/linux/DesktopEntry.h"
#include "platform/linux/XdgFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <utility>

namespace zofra {
namespace {

bool canBeRun(const QString& program) {
    if (!program.startsWith(u'/'))
        return !xdg::findProgram(program).isEmpty();
    const QFileInfo file(program);
    return file.isFile() && file.isExecutable();
}

} // namespace

XdgLoginItem::XdgLoginItem(QString program)
    : m_program(std::move(program)) {}

QString XdgLoginItem::runningProgram() {
    auto path = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    const auto deleted = QStringLiteral(" (deleted)");
    if (path.endsWith(deleted) && !QFileInfo::exists(path))
        path.chop(deleted.size());
    return path;
}

QString XdgLoginItem::filePath() {
    return xdg::configHome() + QStringLiteral("/autostart/be.zofra.ZofraZofra.desktop");
}

bool XdgLoginItem::isEnabled() const {
    QFile file(filePath());
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const auto values = desktopentry::mainGroup(file.read(65'536));
    if (values.value(QStringLiteral("Hidden")) == QStringLiteral("true") ||
        values.value(QStringLiteral("X-GNOME-Autostart-enabled")) == QStringLiteral("false") ||
        values.value(QStringLiteral("X-MATE-Autostart-enabled")) == QStringLiteral("false"))
        return false;
    const auto program = values.value(QStringLiteral("TryExec"));
    return values.contains(QStringLiteral("Exec")) && (program.isEmpty() || canBeRun(program));
}

Result<void> XdgLoginItem::registerItem() {
    const auto path = filePath();
    if (!QDir().mkpath(QFileInfo(path).path()))
        return failure(QFileInfo(path).path() + QStringLiteral(": cannot be made"));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return failure(path + QStringLiteral(": ") + file.errorString());
    const auto text = QStringLiteral("[Desktop Entry]\n"
                                     "Type=Application\n"
                                     "Version=1.0\n"
                                     "Name=Zofra Zofra\n"
                                     "Icon=be.zofra.ZofraZofra\n"
                                     "TryExec=%1\n"
                                     "Exec=%2\n"
                                     "Terminal=false\n"
                                     "StartupNotify=false\n"
                                     "X-GNOME-Autostart-enabled=true\n"
                                     "X-KDE-autostart-after=panel\n")
                          .arg(desktopentry::escapedString(m_program), desktopentry::execArgument(m_program));
    file.write(text.toUtf8());
    if (!file.commit())
        return failure(path + QStringLiteral(": ") + file.errorString());
    return {};
}

Result<void> XdgLoginItem::unregisterItem() {
    QFile file(filePath());
    const bool isThere = file.exists() || QFileInfo(file).isSymLink();
    if (isThere && !file.remove())
        return failure(file.fileName() + QStringLiteral(": ") + file.errorString());
    return {};
}

} // namespace zofra
