// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/IconTheme.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace zofra::icontheme {
namespace {

const auto iconFile = u"/hicolor/scalable/apps/be.zofra.ZofraZofra.svg"_qs;

/// Beside the program, before it is installed and after.
std::optional<QString> folder() {
    const QString path = QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../share/icons"_qs);
    return QFileInfo::exists(path + iconFile) ? std::optional(path) : std::nullopt;
}

} // namespace

std::optional<QString> unusualFolder() {
    const auto path = folder();
    const auto usual = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    return path && usual.contains(QFileInfo(*path).path()) ? QString() : path;
}

QString programIcon() {
    const auto path = folder();
    return path ? *path + iconFile : QString();
}

} // namespace zofra::icontheme
