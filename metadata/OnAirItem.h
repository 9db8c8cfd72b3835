// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/ServiceHosts.h"

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

namespace zofra {

// The answer of the on-air search service. Plain values and pure functions, usable from any thread.

/// One entry of an on-air answer.
struct OnAirItem {
    bool isSong = false;
    QString artist;
    QString title;
    /// Kept, never shown.
    QString desc;
    /// Seconds since 1970.
    std::optional<double> startTime;
    /// Seconds since 1970.
    std::optional<double> stopTime;

    /// A key that is missing or holds another JSON type leaves its field's default.
    [[nodiscard]] static OnAirItem fromJson(const QJsonObject& object);

    /// Artist and title, or the title alone. An artist without a title is deliberately not shown.
    [[nodiscard]] std::optional<QString> formatted() const;

    friend bool operator==(const OnAirItem&, const OnAirItem&) = default;
};

/// Seconds since 1970 out of a JSON number, or out of a text that as a whole is a decimal number ("1.5e9" is
/// one; "nan", "inf" and hexadecimal forms are not). Anything else is absent, as is a number too great for a
/// double.
[[nodiscard]] std::optional<double> timestamp(const QJsonValue& value);

/// The item to show at `now` (seconds since 1970): the first one on air, else the one with the greatest
/// start, else the first.
[[nodiscard]] std::optional<OnAirItem> selectBest(const std::vector<OnAirItem>& items, double now);

/// Where the service is asked for the station `rpId`.
[[nodiscard]] std::optional<QUrl> onAirUrl(const ServiceHosts& hosts, const QString& rpId);

/// The items of the station `rpId` in an answer, which may be wrapped in a JSONP call; absent when the answer
/// is not what it should be. Takes a while for the longest answers: not for the main thread.
[[nodiscard]] std::optional<std::vector<OnAirItem>> onAirItems(const QByteArray& body, const QString& rpId);

/// The text to show at `now` (seconds since 1970): of a song, else of another item, else none.
[[nodiscard]] std::optional<QString> onAirText(const std::vector<OnAirItem>& items, double now);

} // namespace zofra
