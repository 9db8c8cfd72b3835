// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/OnAirItem.h"

#include "metadata/JsonText.h"
#include "metadata/LiveTrack.h"

#include <QJsonArray>
#include <QRegularExpression>

namespace zofra {

namespace {

QString trimmedText(const QJsonValue& value) {
    return value.toString().trimmed();
}

bool isOnAir(const OnAirItem& item, double now) {
    if (!item.startTime || now < *item.startTime)
        return false;
    // An inverted or empty window is taken as open-ended.
    return !item.stopTime || *item.stopTime <= *item.startTime || now <= *item.stopTime;
}

} // namespace

OnAirItem OnAirItem::fromJson(const QJsonObject& object) {
    return {.isSong = object.value(u"song").toBool(false),
            .artist = trimmedText(object.value(u"artistName")),
            .title = trimmedText(object.value(u"name")),
            .desc = trimmedText(object.value(u"description")),
            .startTime = timestamp(object.value(u"startTime")),
            .stopTime = timestamp(object.value(u"stopTime"))};
}

std::optional<QString> OnAirItem::formatted() const {
    if (title.isEmpty())
        return std::nullopt;
    return artist.isEmpty() ? title : artist + nowPlayingSeparator() + title;
}

std::optional<double> timestamp(const QJsonValue& value) {
    if (value.isDouble())
        return value.toDouble();
    if (!value.isString())
        return std::nullopt;
    static const QRegularExpression number(uR"(\A[+-]?(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?\z)"_qs);
    const auto text = value.toString().trimmed();
    if (!number.match(text).hasMatch())
        return std::nullopt;
    bool fits = false;
    const double seconds = text.toDouble(&fits);
    return fits ? std::optional(seconds) : std::nullopt;
}

std::optional<OnAirItem> selectBest(const std::vector<OnAirItem>& items, double now) {
    const OnAirItem* latest = nullptr;
    for (const auto& item : items) {
        if (isOnAir(item, now))
            return item;
        if (item.startTime && (latest == nullptr || *item.startTime > *latest->startTime))
            latest = &item;
    }
    if (latest != nullptr)
        return *latest;
    return items.empty() ? std::nullopt : std::optional(items.front());
}

std::optional<QUrl> onAirUrl(const ServiceHosts& hosts, const QString& rpId) {
    return serviceUrl(u"https"_qs, hosts.onAirHost(), u"/056/qp/v3/onair?rpIds="_qs + rpId);
}

std::optional<std::vector<OnAirItem>> onAirItems(const QByteArray& body, const QString& rpId) {
    const auto text = textFromUtf8(body);
    const auto json = text ? unwrapJSONP(*text) : std::nullopt;
    // As many as the longest body of real items holds.
    JsonBudget budget{100'000};
    const auto document = json ? parseJsonText(json->toUtf8(), budget) : std::nullopt;
    if (!document || !document->isObject())
        return std::nullopt;
    const auto results = document->object().value(u"results");
    const auto entries = results.isObject() ? results.toObject().value(rpId) : QJsonValue();
    if (!entries.isArray())
        return std::nullopt;
    std::vector<OnAirItem> items;
    const auto array = entries.toArray();
    items.reserve(static_cast<std::size_t>(array.size()));
    for (const auto& entry : array) {
        if (!entry.isObject())
            return std::nullopt;
        items.push_back(OnAirItem::fromJson(entry.toObject()));
    }
    return items;
}

std::optional<QString> onAirText(const std::vector<OnAirItem>& items, double now) {
    std::vector<OnAirItem> songs;
    std::vector<OnAirItem> others;
    for (const auto& item : items) {
        if (item.formatted())
            (item.isSong ? songs : others).push_back(item);
    }
    // Every item that has a text is in one of the lists.
    const auto best = selectBest(songs.empty() ? others : songs, now);
    return best ? best->formatted() : std::nullopt;
}

} // namespace zofra
