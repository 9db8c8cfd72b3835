// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace zofra::xdg {

/// $XDG_CONFIG_HOME, else .config in the home folder. Relative settings count as none.
[[nodiscard]] QString configHome();
/// $XDG_STATE_HOME, else .local/state in the home folder. Relative settings count as none.
[[nodiscard]] QString stateHome();
/// $XDG_CONFIG_DIRS in descending weight; /etc/xdg only where that is empty. Relative entries are left out.
[[nodiscard]] QStringList configDirs();
/// Where a file of this name may stand in those folders, weakest first.
[[nodiscard]] QStringList configFiles(const QString& name);
/// The names in $XDG_CURRENT_DESKTOP, in order.
[[nodiscard]] QStringList currentDesktops();
/// The file of this name in $PATH that can be run; empty when there is none. Unlike the shell, never the
/// current folder.
[[nodiscard]] QString findProgram(const QString& name);

} // namespace zofra::xdg
