// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/XdgFolders.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace zofra::xdg {
namespace {

QStringList list(const char* variable) {
    return qEnvironmentVariable(variable).split(u':', Qt::SkipEmptyParts);
}

QString home(const char* variable, const QString& standard) {
    const auto set = qEnvironmentVariable(variable);
    return set.startsWith(u'/') ? QDir::cleanPath(set) : QDir::homePath() + standard;
}

} // namespace

QString configHome() {
    return home("XDG_CONFIG_HOME", u"/.config"_qs);
}

QString stateHome() {
    return home("XDG_STATE_HOME", u"/.local/state"_qs);
}

QStringList configDirs() {
    if (qEnvironmentVariableIsEmpty("XDG_CONFIG_DIRS"))
        return {u"/etc/xdg"_qs};
    QStringList folders;
    for (const auto& folder : list("XDG_CONFIG_DIRS")) {
        if (folder.startsWith(u'/'))
            folders += QDir::cleanPath(folder);
    }
    return folders;
}

QStringList configFiles(const QString& name) {
    auto folders = QStringList{configHome()} + configDirs();
    std::ranges::reverse(folders);
    for (auto& folder : folders)
        folder += u'/' + name;
    return folders;
}

QStringList currentDesktops() {
    return list("XDG_CURRENT_DESKTOP");
}

QString findProgram(const QString& name) {
    for (const auto& folder : list("PATH")) {
        const QFileInfo file(folder + u'/' + name);
        if (folder.startsWith(u'/') && file.isFile() && file.isExecutable())
            return file.filePath();
    }
    return {};
}

} // namespace zofra::xdg
