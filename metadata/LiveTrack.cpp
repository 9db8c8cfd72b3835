// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/LiveTrack.h"

#include <QJsonArray>
#include <QJsonValue>

namespace zofra {

namespace {

enum class Reading { fine, otherType };

/// One JSON value as a record's field; absent when it has another type.
template<typename Record>
std::optional<Record> valueAs(const QJsonValue& value) {
    if (!value.isObject())
        return std::nullopt;
    return Record::fromJson(value.toObject());
}

template<>
std::optional<QString> valueAs<QString>(const QJsonValue& value) {
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

/// Whole numbers only, however they are written: 1.0 is one, 1.5 and 1e30 are not.
template<>
std::optional<std::int64_t> valueAs<std::int64_t>(const QJsonValue& value) {
    // The default is what toInteger answers for a number that is not whole; when it is the number itself, ask
    // again.
    if (!value.isDouble() || (value.toInteger(0) == 0 && value.toInteger(1) == 1))
        return std::nullopt;
    return value.toInteger();
}

template<>
std::optional<std::vector<std::int64_t>> valueAs<std::vector<std::int64_t>>(const QJsonValue& value) {
    if (!value.isArray())
        return std::nullopt;
    std::vector<std::int64_t> list;
    const auto array = value.toArray();
    for (const auto& element : array) {
        const auto number = valueAs<std::int64_t>(element);
        if (!number)
            return std::nullopt;
        list.push_back(*number);
    }
    return list;
}

template<typename Field>
Reading read(const QJsonObject& object, QLatin1String key, std::optional<Field>& field) {
    const auto value = object.value(key);
    if (value.isUndefined() || value.isNull())
        return Reading::fine;
    field = valueAs<Field>(value);
    return field ? Reading::fine : Reading::otherType;
}

template<typename Record, typename... Readings>
std::optional<Record> recordIf(Record record, Readings... readings) {
    return ((readings == Reading::fine) && ...) ? std::optional(std::move(record)) : std::nullopt;
}

template<typename Record>
std::optional<Record> decodeDocument(const QByteArray& utf8, JsonBudget& budget) {
    const auto document = parseJsonText(utf8, budget);
    if (!document || !document->isObject())
        return std::nullopt;
    return Record::fromJson(document->object());
}

void write(QJsonObject& object, QLatin1String key, const std::optional<QString>& text) {
    if (text)
        object.insert(key, *text);
}

template<typename Record>
void write(QJsonObject& object, QLatin1String key, const std::optional<Record>& record) {
    if (record)
        object.insert(key, record->toJson());
}

QString trimmedName(const std::optional<ZofraLiveArtist>& artist) {
    return artist ? artist->name.value_or(QString()).trimmed() : QString();
}

QString joined(const std::optional<ZofraLiveArtist>& artist, const std::optional<QString>& title,
               const QString& otherwise) {
    auto a = trimmedName(artist);
    auto t = title.value_or(QString()).trimmed();
    if (!a.isEmpty() && !t.isEmpty())
        return a + nowPlayingSeparator() + t;
    if (!t.isEmpty())
        return t;
    return a.isEmpty() ? otherwise : a;
}

constexpr QLatin1String nameKey("name");
constexpr QLatin1String titleKey("title");
constexpr QLatin1String artistKey("artist");
constexpr QLatin1String nextKey("next");
constexpr QLatin1String stationKey("station");
constexpr QLatin1String entityKey("entity");
constexpr QLatin1String actionKey("action");
constexpr QLatin1String dataKey("data");
constexpr QLatin1String idsKey("ids");

} // namespace

QString nowPlayingSeparator() {
    return QStringLiteral(" \u2013 ");
}

std::optional<ZofraLiveArtist> ZofraLiveArtist::fromJson(const QJsonObject& object) {
    ZofraLiveArtist artist;
    const auto name = read(object, nameKey, artist.name);
    return recordIf(std::move(artist), name);
}

QJsonObject ZofraLiveArtist::toJson() const {
    QJsonObject object;
    write(object, nameKey, name);
    return object;
}

QString ZofraNextTrack::formatted() const {
    return joined(artist, title, QString());
}

std::optional<ZofraNextTrack> ZofraNextTrack::fromJson(const QJsonObject& object) {
    ZofraNextTrack track;
    const auto title = read(object, titleKey, track.title);
    const auto artist = read(object, artistKey, track.artist);
    return recordIf(std::move(track), title, artist);
}

QJsonObject ZofraNextTrack::toJson() const {
    QJsonObject object;
    write(object, titleKey, title);
    write(object, artistKey, artist);
    return object;
}

QString ZofraLiveTrackData::formattedCurrent() const {
    return joined(artist, title, QStringLiteral("Radio"));
}

std::optional<ZofraLiveTrackData> ZofraLiveTrackData::fromJson(const QJsonObject& object) {
    ZofraLiveTrackData track;
    const auto title = read(object, titleKey, track.title);
    const auto artist = read(object, artistKey, track.artist);
    const auto next = read(object, nextKey, track.next);
    return recordIf(std::move(track), title, artist, next);
}

QJsonObject ZofraLiveTrackData::toJson() const {
    QJsonObject object;
    write(object, titleKey, title);
    write(object, artistKey, artist);
    write(object, nextKey, next);
    return object;
}

std::optional<ZofraLivePlayEvent> ZofraLivePlayEvent::fromJson(const QJsonObject& object) {
    ZofraLivePlayEvent event;
    const auto station = read(object, stationKey, event.station);
    const auto entity = read(object, entityKey, event.entity);
    const auto action = read(object, actionKey, event.action);
    const auto data = read(object, dataKey, event.data);
    return recordIf(std::move(event), station, entity, action, data);
}

std::optional<ZofraLivePlayEvent> ZofraLivePlayEvent::decode(const QByteArray& utf8, JsonBudget& budget) {
    return decodeDocument<ZofraLivePlayEvent>(utf8, budget);
}

QJsonObject ZofraLivePlayEvent::toJson() const {
    QJsonObject object;
    write(object, stationKey, station);
    write(object, entityKey, entity);
    write(object, actionKey, action);
    write(object, dataKey, data);
    return object;
}

std::optional<SockJSDataPayload> SockJSDataPayload::fromJson(const QJsonObject& object) {
    SockJSDataPayload payload;
    const auto action = read(object, actionKey, payload.action);
    const auto ids = read(object, idsKey, payload.ids);
    const auto data = read(object, dataKey, payload.data);
    return recordIf(std::move(payload), action, ids, data);
}

std::optional<SockJSDataPayload> SockJSDataPayload::decode(const QByteArray& utf8, JsonBudget& budget) {
    return decodeDocument<SockJSDataPayload>(utf8, budget);
}

QJsonObject SockJSDataPayload::toJson() const {
    QJsonObject object;
    write(object, actionKey, action);
    if (ids) {
        QJsonArray list;
        for (const auto id : *ids)
            list.append(static_cast<qint64>(id));
        object.insert(idsKey, list);
    }
    write(object, dataKey, data);
    return object;
}

} // namespace zofra
