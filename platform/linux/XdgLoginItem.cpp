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
    auto path = QFile::symLinkTarget(u"/proc/self/exe"_qs);
    const auto deleted = u" (deleted)"_qs;
    if (path.endsWith(deleted) && !QFileInfo::exists(path))
        path.chop(deleted.size());
    return path;
}

QString XdgLoginItem::filePath() {
    return xdg::configHome() + u"/autostart/be.zofra.ZofraZofra.desktop"_qs;
}

bool XdgLoginItem::isEnabled() const {
    QFile file(filePath());
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const auto values = desktopentry::mainGroup(file.read(65'536));
    if (values.value(u"Hidden"_qs) == u"true" || values.value(u"X-GNOME-Autostart-enabled"_qs) == u"false" ||
        values.value(u"X-MATE-Autostart-enabled"_qs) == u"false")
        return false;
    const auto program = values.value(u"TryExec"_qs);
    return values.contains(u"Exec"_qs) && (program.isEmpty() || canBeRun(program));
}

Result<void> XdgLoginItem::registerItem() {
    const auto path = filePath();
    if (!QDir().mkpath(QFileInfo(path).path()))
        return failure(QFileInfo(path).path() + u": cannot be made"_qs);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return failure(path + u": "_qs + file.errorString());
    const auto text = u"[Desktop Entry]\n"
                      u"Type=Application\n"
                      u"Version=1.0\n"
                      u"Name=Zofra Zofra\n"
                      u"Icon=be.zofra.ZofraZofra\n"
                      u"TryExec=%1\n"
                      u"Exec=%2\n"
                      u"Terminal=false\n"
                      u"StartupNotify=false\n"
                      u"X-GNOME-Autostart-enabled=true\n"
                      u"X-KDE-autostart-after=panel\n"_qs.arg(desktopentry::escapedString(m_program),
                                                              desktopentry::execArgument(m_program));
    file.write(text.toUtf8());
    if (!file.commit())
        return failure(path + u": "_qs + file.errorString());
    return {};
}

Result<void> XdgLoginItem::unregisterItem() {
    QFile file(filePath());
    const bool isThere = file.exists() || QFileInfo(file).isSymLink();
    if (isThere && !file.remove())
        return failure(file.fileName() + u": "_qs + file.errorString());
    return {};
}

} // namespace zofra
