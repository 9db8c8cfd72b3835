// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/LoginItem.h"
#include "platform/linux/DesktopEntry.h"
#include "platform/linux/XdgFolders.h"

#include <QFile>
#include <QSaveFile>
#include <QString>

#include <utility>

namespace zofra {

/// Starting at login through the user's autostart folder. Main thread only.
class XdgLoginItem final : public LoginItem {
public:
    /// `program` is what is started, an absolute path.
    explicit XdgLoginItem(QString program = runningProgram())
        : m_program(std::move(program)) {}

    /// The path of this program's file; where it was replaced by an update, the path of the new one.
    [[nodiscard]] static QString runningProgram() {
        auto path = QFile::symLinkTarget(u"/proc/self/exe"_qs);
        const auto deleted = u" (deleted)"_qs;
        if (path.endsWith(deleted) && !QFileInfo::exists(path))
            path.chop(deleted.size());
        return path;
    }
    /// autostart/be.zofra.ZofraZofra.desktop in the user's configuration folder.
    [[nodiscard]] static QString filePath() {
        return xdg::configHome() + u"/autostart/be.zofra.ZofraZofra.desktop"_qs;
    }

    /// False also for a file that desktops pass over: one that says Hidden or that a settings dialog has
    /// switched off, or whose program is gone.
    [[nodiscard]] bool isEnabled() const override {
        QFile file(filePath());
        if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
            return false;
        const auto values = desktopentry::mainGroup(file.read(65'536));
        if (values.value(u"Hidden"_qs) == u"true" ||
            values.value(u"X-GNOME-Autostart-enabled"_qs) == u"false" ||
            values.value(u"X-MATE-Autostart-enabled"_qs) == u"false")
            return false;
        const auto program = values.value(u"TryExec"_qs);
        return values.contains(u"Exec"_qs) && (program.isEmpty() || canBeRun(program));
    }
    [[nodiscard]] Result<void> registerItem() override {
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
    [[nodiscard]] Result<void> unregisterItem() override {
        QFile file(filePath());
        const bool isThere = file.exists() || QFileInfo(file).isSymLink();
        if (isThere && !file.remove())
            return failure(file.fileName() + u": "_qs + file.errorString());
        return {};
    }

private:
    [[nodiscard]] static bool canBeRun(const QString& program) {
        if (!program.startsWith(u'/'))
            return !xdg::findProgram(program).isEmpty();
        const QFileInfo file(program);
        return file.isFile() && file.isExecutable();
    }

    QString m_program;
};

} // namespace zofra
