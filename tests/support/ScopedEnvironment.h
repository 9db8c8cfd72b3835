// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <map>
#include <optional>

namespace zofra::test {

/// Changes environment variables for the length of a test.
class ScopedEnvironment {
public:
    ScopedEnvironment() = default;
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;
    ~ScopedEnvironment() {
        for (const auto& [name, value] : m_previous) {
            if (value)
                qputenv(name.constData(), *value);
            else
                qunsetenv(name.constData());
        }
    }
    void set(const QByteArray& name, const QByteArray& value) {
        remember(name);
        qputenv(name.constData(), value);
    }
    void unset(const QByteArray& name) {
        remember(name);
        qunsetenv(name.constData());
    }

private:
    void remember(const QByteArray& name) {
        const bool isSet = qEnvironmentVariableIsSet(name.constData());
        m_previous.emplace(name, isSet ? std::optional(qgetenv(name.constData())) : std::nullopt);
    }
    std::map<QByteArray, std::optional<QByteArray>> m_previous;
};

} // namespace zofra::test
