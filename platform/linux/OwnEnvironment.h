// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QProcessEnvironment>

#include <optional>

namespace zofra {

/// Variables that libraries in this program read, and that no program that it starts may inherit: to those
/// they would say that they are this one.
class OwnEnvironment {
public:
    /// Before there are threads that may read it.
    static void set(const char* name, const QByteArray& value) {
        const auto key = QString::fromLatin1(name);
        if (!s_replaced.contains(key))
            s_replaced.insert(key, qEnvironmentVariableIsSet(name) ? std::optional(qEnvironmentVariable(name))
                                                                   : std::nullopt);
        qputenv(name, value);
    }
    /// The environment as it was found. Main thread only.
    [[nodiscard]] static QProcessEnvironment forOthers() {
        auto environment = QProcessEnvironment::systemEnvironment();
        for (auto value = s_replaced.cbegin(); value != s_replaced.cend(); ++value) {
            if (*value)
                environment.insert(value.key(), **value);
            else
                environment.remove(value.key());
        }
        return environment;
    }

private:
    /// What was there before; nothing where there was none.
    static inline QHash<QString, std::optional<QString>> s_replaced;
};

} // namespace zofra
