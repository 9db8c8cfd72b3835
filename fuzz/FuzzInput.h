// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>

namespace zofra::fuzz {

/// The fuzzer's bytes as decisions: numbers, texts, one of several. When they are used up, everything is 0 or
/// empty.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : m_rest(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)) {}

    [[nodiscard]] bool isEmpty() const { return m_rest.isEmpty(); }

    /// One byte.
    std::uint8_t byte() { return isEmpty() ? std::uint8_t{0} : static_cast<std::uint8_t>(take(1)[0]); }

    /// Four bytes.
    std::int32_t number() {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i)
            value = value << 8U | byte();
        return static_cast<std::int32_t>(value);
    }

    /// Bytes up to the next line feed, which is dropped.
    QByteArray line() {
        const auto end = m_rest.indexOf('\n');
        const auto found = take(end < 0 ? m_rest.size() : end);
        if (!isEmpty())
            take(1);
        return found.toByteArray();
    }

    QString text() { return QString::fromUtf8(line()); }

    /// Everything before `separator`, which is dropped, or all that is left.
    QByteArray until(QByteArrayView separator) {
        const auto end = m_rest.indexOf(separator);
        const auto found = take(end < 0 ? m_rest.size() : end);
        take(std::min(separator.size(), m_rest.size()));
        return found.toByteArray();
    }

    template<typename T>
    T oneOf(std::initializer_list<T> choices) {
        return *(choices.begin() + byte() % choices.size());
    }

    /// A value such as a bus delivers, containers included.
    QVariant value(int depth = 0) {
        switch (byte() % (depth < 3 ? 14 : 10)) {
        case 0:
            return text();
        case 1:
            return byte() % 2 == 1;
        case 2:
            return number();
        case 3:
            return static_cast<uint>(number());
        case 4:
            return static_cast<qlonglong>(number()) << 20;
        case 5:
            return number() / 1000.0;
        case 6:
            return std::numeric_limits<double>::quiet_NaN();
        case 7:
            return line();
        case 8:
            return QVariant::fromValue(byte());
        case 9:
            return static_cast<qulonglong>(number());
        case 10:
        case 11: {
            QVariantList list;
            for (auto count = byte() % 4; count > 0; --count)
                list << value(depth + 1);
            return list;
        }
        case 12:
            return map(depth + 1);
        default:
            return QStringList{text(), text()};
        }
    }

    QVariantMap map(int depth = 0) {
        QVariantMap made;
        for (auto count = byte() % 6; count > 0; --count) {
            const auto key = text();
            made.insert(key, value(depth));
        }
        return made;
    }

private:
    QByteArrayView take(qsizetype count) {
        const auto taken = m_rest.first(count);
        m_rest = m_rest.sliced(count);
        return taken;
    }

    QByteArrayView m_rest;
};

} // namespace zofra::fuzz
