// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QString>

#include <optional>

namespace zofra::icontheme {

/// The file with the program's own icon, beside the program, before it is installed and after; empty where
/// there is none.
[[nodiscard]] inline QString programIcon() {
    const auto path = QDir::cleanPath(QCoreApplication::applicationDirPath() +
                                      u"/../share/icons/hicolor/scalable/apps/be.zofra.ZofraZofra.svg"_qs);
    return QFileInfo::exists(path) ? path : QString();
}
/// Where the program's own icon theme is; empty when those who look into the usual places find it anyway,
/// absent where there is none.
[[nodiscard]] inline std::optional<QString> unusualFolder() {
    const auto icon = programIcon();
    if (icon.isEmpty())
        return std::nullopt;
    const auto folder = QDir::cleanPath(icon + u"/../../../.."_qs);
    const auto usual = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    return usual.contains(QFileInfo(folder).path()) ? QString() : folder;
}

} // namespace zofra::icontheme
