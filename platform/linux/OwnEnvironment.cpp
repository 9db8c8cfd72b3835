// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/OwnEnvironment.h"

#include <QHash>

#include <optional>

namespace zofra {

namespace {

/// What was there before; nothing where there was none.
QHash<QString, std::optional<QString>>& replaced() {
    static QHash<QString, std::optional<QString>> values;
    return values;
}

} // namespace

void OwnEnvironment::set(const char* name, const QByteArray& value) {
    const auto key = QString::fromLatin1(name);
    if (!replaced().contains(key))
        replaced().insert(key, qEnvironmentVariableIsSet(name) ? std::optional(qEnvironmentVariable(name))
                                                               : std::nullopt);
    qputenv(name, value);
}

QProcessEnvironment OwnEnvironment::forOthers() {
    auto environment = QProcessEnvironment::systemEnvironment();
    for (auto value = replaced().cbegin(); value != replaced().cend(); ++value) {
        if (*value)
            environment.insert(value.key(), **value);
        else
            environment.remove(value.key());
    }
    return environment;
}

} // namespace zofra
