// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Settings.h"

#include <QStringList>

namespace zofra {

bool isOn(const DefaultsStore& defaults, const QString& key, bool otherwise) {
    static const QStringList on{QStringLiteral("true"), QStringLiteral("on"), QStringLiteral("yes"),
                                QStringLiteral("1")};
    static const QStringList off{QStringLiteral("false"), QStringLiteral("off"), QStringLiteral("no"),
                                 QStringLiteral("0")};
    const QString value = defaults.string(key).value_or(QString()).trimmed().toLower();
    return on.contains(value) || (otherwise && !off.contains(value));
}

} // namespace zofra
