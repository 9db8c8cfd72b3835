// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace zofra {

/// The user's settings: a key-value store that outlives the program. Main thread only. Reading never fails:
/// what is missing or unreadable is absent. A write that fails is reported by the implementation; the value
/// stays readable for the rest of the run.
class DefaultsStore {
public:
    virtual ~DefaultsStore() = default;

    [[nodiscard]] virtual std::optional<QString> string(const QString& key) const = 0;
    /// Absent when the key is missing or its text is no finite number.
    [[nodiscard]] virtual std::optional<float> floatValue(const QString& key) const = 0;
    /// JSON text, as UTF-8.
    [[nodiscard]] virtual std::optional<QByteArray> data(const QString& key) const = 0;

    virtual void setString(const QString& key, const QString& value) = 0;
    virtual void setFloat(const QString& key, float value) = 0;
    virtual void setData(const QString& key, const QByteArray& value) = 0;
};

} // namespace zofra
