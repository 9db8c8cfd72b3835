// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QUrl>

#include <concepts>
#include <cstdint>
#include <optional>

namespace zofra {

// Records as JSON objects, both ways. A record names its fields once:
//
//     struct Artist {
//         QString name;
//         static void visitFields(auto& artist, auto&& field) { field("name", artist.name); }
//     };
//
// A field may be a text, a truth, a whole number, an address, a record, or a list of these. An optional one
// is left out when it is absent, and is absent when its key is missing or null. A value of another JSON type,
// or a missing one that is not optional, makes the whole record unreadable; unknown keys are ignored. Pure
// functions, callable from any thread.

template<typename Field>
[[nodiscard]] std::optional<Field> fromJson(const QJsonValue& value);

namespace json {

template<typename Type>
concept List = requires(Type list, typename Type::value_type value) {
    list.push_back(value);
};

/// Whole numbers only, however they are written: 1.0 is one, 1.5 and 1e30 are not.
inline std::optional<std::int64_t> wholeNumber(const QJsonValue& value) {
    // toInteger answers its default for a number that is not whole; two tell it from the number itself.
    if (!value.isDouble() || (value.toInteger(0) == 0 && value.toInteger(1) == 1))
        return std::nullopt;
    return value.toInteger();
}

/// In the form in which it is written, so that what is read is what was meant when it is read again.
inline std::optional<QUrl> address(const QJsonValue& value) {
    const QUrl read(value.toString(), QUrl::StrictMode);
    QUrl url(QString::fromLatin1(read.toEncoded(QUrl::FullyEncoded)), QUrl::StrictMode);
    return value.isString() && url.isValid() && !url.isRelative() ? std::optional(url) : std::nullopt;
}

template<typename Field>
bool read(const QJsonValue& value, Field& field) {
    auto found = fromJson<Field>(value);
    if (found)
        field = std::move(*found);
    return found.has_value();
}

template<typename Field>
bool read(const QJsonValue& value, std::optional<Field>& field) {
    return value.isUndefined() || value.isNull() || read(value, field.emplace());
}

template<List Type>
std::optional<Type> list(const QJsonValue& value) {
    Type list;
    for (const auto element : value.toArray()) {
        auto item = fromJson<typename Type::value_type>(element);
        if (!item)
            return std::nullopt;
        list.push_back(std::move(*item));
    }
    return value.isArray() ? std::optional(std::move(list)) : std::nullopt;
}

template<typename Record>
std::optional<Record> record(const QJsonValue& value) {
    const auto object = value.toObject();
    Record record;
    bool isGood = value.isObject();
    Record::visitFields(record, [&](const char* key, auto& field) {
        isGood = isGood && read(object.value(QLatin1String(key)), field);
    });
    return isGood ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace json

template<typename Field>
std::optional<Field> fromJson(const QJsonValue& value) {
    if constexpr (std::same_as<Field, QString>)
        return value.isString() ? std::optional(value.toString()) : std::nullopt;
    else if constexpr (std::same_as<Field, bool>)
        return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
    else if constexpr (std::same_as<Field, std::int64_t>)
        return json::wholeNumber(value);
    else if constexpr (std::same_as<Field, QUrl>)
        return json::address(value);
    else if constexpr (json::List<Field>)
        return json::list<Field>(value);
    else
        return json::record<Field>(value);
}

template<typename Field>
[[nodiscard]] QJsonValue toJson(const Field& field) {
    if constexpr (std::same_as<Field, QString> || std::same_as<Field, bool>) {
        return field;
    } else if constexpr (std::same_as<Field, std::int64_t>) {
        return static_cast<qint64>(field);
    } else if constexpr (std::same_as<Field, QUrl>) {
        return QString::fromLatin1(field.toEncoded(QUrl::FullyEncoded));
    } else if constexpr (json::List<Field>) {
        QJsonArray array;
        for (const auto& item : field)
            array.append(toJson(item));
        return array;
    } else {
        QJsonObject object;
        Field::visitFields(field, [&]<typename Member>(const char* key, const Member& member) {
            if constexpr (requires { member.has_value(); }) {
                if (member)
                    object.insert(QLatin1String(key), toJson(*member));
            } else {
                object.insert(QLatin1String(key), toJson(member));
            }
        });
        return object;
    }
}

/// An object or array as text without a blank in it.
[[nodiscard]] QString compactJson(const auto& value) {
    return QString::fromUtf8(QJsonDocument(value).toJson(QJsonDocument::Compact));
}

} // namespace zofra
