// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"

#include <QMap>
#include <QVariant>

#include <vector>

namespace zofra::test {

/// Settings in memory, with a record of every write.
class FakeDefaultsStore final : public DefaultsStore {
public:
    std::optional<QString> string(const QString& key) const override {
        const auto value = find(key);
        return value.typeId() == QMetaType::QString ? std::optional(value.toString()) : std::nullopt;
    }
    std::optional<float> floatValue(const QString& key) const override {
        const auto value = find(key);
        return value.typeId() == QMetaType::Float ? std::optional(value.toFloat()) : std::nullopt;
    }
    std::optional<QByteArray> data(const QString& key) const override {
        const auto value = find(key);
        return value.typeId() == QMetaType::QByteArray ? std::optional(value.toByteArray()) : std::nullopt;
    }
    void setString(const QString& key, const QString& value) override { write(key, value); }
    void setFloat(const QString& key, float value) override { write(key, value); }
    void setData(const QString& key, const QByteArray& value) override { write(key, value); }

    QMap<QString, QVariant> values;
    /// Keys in the order written.
    std::vector<QString> writes;
    /// Keys in the order read.
    mutable std::vector<QString> reads;

private:
    QVariant find(const QString& key) const {
        reads.push_back(key);
        return values.value(key);
    }
    void write(const QString& key, const QVariant& value) {
        values[key] = value;
        writes.push_back(key);
    }
};

} // namespace zofra::test
