// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

namespace zofra::desktopentry {

/// `text` as a value of type string.
[[nodiscard]] QString escapedString(const QString& text);
/// One program or argument for the value of Exec, quoted where it must be, escaped as a string as well.
[[nodiscard]] QString execArgument(const QString& argument);
/// The values of the group [Desktop Entry], unescaped; the first of two with the same key counts.
[[nodiscard]] QHash<QString, QString> mainGroup(const QByteArray& file);

} // namespace zofra::desktopentry
