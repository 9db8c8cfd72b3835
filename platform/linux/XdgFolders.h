// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFileInfo>
#include <QString>
#include <QStringList>

#include <algorithm>

namespace zofra::xdg {

/// The entries of a variable that is a list; empty ones are none.
[[nodiscard]] inline QStringList list(const char* variable) {
    return qEnvironmentVariable(variable).split(u':', Qt::SkipEmptyParts);
}
/// The folder that a variable names, else `standard` in the home folder. Relative settings count as none.
[[nodiscard]] inline QString home(const char* variable, const QString& standard) {
    const auto set = qEnvironmentVariable(variable);
    return set.startsWith(u'/') ? QDir::cleanPath(set) : QDir::homePath() + standard;
}

/// $XDG_CONFIG_HOME, else .config in the home folder.
[[nodiscard]] inline QString configHome() {
    return home("XDG_CONFIG_HOME", u"/.config"_qs);
}
/// $XDG_STATE_HOME, else .local/state in the home folder.
[[nodiscard]] inline QString stateHome() {
    return home("XDG_STATE_HOME", u"/.local/state"_qs);
}
/// $XDG_CONFIG_DIRS in descending weight; /etc/xdg only where that is empty. Relative entries are left out.
[[nodiscard]] inline QStringList configDirs() {
    if (qEnvironmentVariableIsEmpty("XDG_CONFIG_DIRS"))
        return {u"/etc/xdg"_qs};
    QStringList folders;
    for (const auto& folder : list("XDG_CONFIG_DIRS")) {
        if (folder.startsWith(u'/'))
            folders += QDir::cleanPath(folder);
    }
    return folders;
}
/// Where a file of this name may stand in those folders, weakest first.
[[nodiscard]] inline QStringList configFiles(const QString& name) {
    auto folders = QStringList{configHome()} + configDirs();
    std::ranges::reverse(folders);
    for (auto& folder : folders)
        folder += u'/' + name;
    return folders;
}
/// The names in $XDG_CURRENT_DESKTOP, in order.
[[nodiscard]] inline QStringList currentDesktops() {
    return list("XDG_CURRENT_DESKTOP");
}
/// The file of this name in $PATH that can be run; empty when there is none. Unlike the shell, never the
/// current folder.
[[nodiscard]] inline QString findProgram(const QString& name) {
    for (const auto& folder : list("PATH")) {
        const QFileInfo file(folder + u'/' + name);
        if (folder.startsWith(u'/') && file.isFile() && file.isExecutable())
            return file.filePath();
    }
    return {};
}

} // namespace zofra::xdg
