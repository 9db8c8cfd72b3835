// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/IconTheme.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace zofra::icontheme {
namespace {

const auto iconFile = QStringLiteral("/hicolor/scalable/apps/be.zofra.ZofraZofra.svg");

} // namespace

std::optional<QString> folder() {
    const QString path =
        QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/icons"));
    return QFileInfo::exists(path + iconFile) ? std::optional(path) : std::nullopt;
}

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
