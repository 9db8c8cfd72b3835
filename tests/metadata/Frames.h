// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

namespace zofra::test {

/// The innermost document: what a station plays.
inline QByteArray playEvent(const std::optional<QString>& station, const QString& title,
                            const std::optional<QString>& artist = std::nullopt,
                            const std::optional<QString>& nextTitle = std::nullopt) {
    QJsonObject data{{u"title"_qs, title}};
    if (artist)
        data.insert(u"artist"_qs, QJsonObject{{u"name"_qs, *artist}});
    if (nextTitle)
        data.insert(u"next"_qs, QJsonObject{{u"title"_qs, *nextTitle}});
    QJsonObject event{{u"entity"_qs, u"plays"_qs}, {u"action"_qs, u"play"_qs}, {u"data"_qs, data}};
    if (station)
        event.insert(u"station"_qs, *station);
    return QJsonDocument(event).toJson(QJsonDocument::Compact);
}

/// The document around it.
inline QString element(const QByteArray& event) {
    const QJsonObject payload{
        {u"action"_qs, u"data"_qs}, {u"ids"_qs, QJsonArray{1}}, {u"data"_qs, QString::fromUtf8(event)}};
    return QString::fromUtf8(QJsonDocument(payload).toJson(QJsonDocument::Compact));
}

/// The frame around any number of those.
inline QString arrayFrame(const std::vector<QString>& elements) {
    QJsonArray list;
    for (const auto& text : elements)
        list.append(text);
    return u"a"_qs + QString::fromUtf8(QJsonDocument(list).toJson(QJsonDocument::Compact));
}

/// A frame with one track.
inline QString trackFrame(const std::optional<QString>& station, const QString& title,
                          const std::optional<QString>& artist = std::nullopt,
                          const std::optional<QString>& nextTitle = std::nullopt) {
    return arrayFrame({element(playEvent(station, title, artist, nextTitle))});
}

} // namespace zofra::test
