// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/LiveSocket.h"

#include "stations/ServiceHosts.h"

#include <QJsonArray>
#include <QRandomGenerator>
#include <QUuid>

namespace zofra {

namespace {

/// The track in one element of an array frame, if it holds one for `station`.
std::optional<ZofraLiveTrackData> liveTrackInElement(const QString& element, RadioStation station,
                                                     JsonBudget& budget) {
    const auto payload = decodeDocument<SockJSDataPayload>(element.toUtf8(), budget);
    if (!payload || payload->action != u"data" || !payload->data)
        return std::nullopt;
    auto event = decodeDocument<ZofraLivePlayEvent>(payload->data->toUtf8(), budget);
    if (!event)
        return std::nullopt;
    if (event->station && event->station != station.liveSocketId())
        return std::nullopt;
    return std::move(event->data);
}

} // namespace

SockJSFrameKind sockJSFrameKind(const QString& text) {
    if (text == u'o')
        return SockJSFrameKind::open;
    if (text == u'h')
        return SockJSFrameKind::heartbeat;
    if (text.startsWith(u'c'))
        return SockJSFrameKind::close;
    if (text.startsWith(u"a["))
        return SockJSFrameKind::array;
    return SockJSFrameKind::unknown;
}

std::optional<QString> textIn(const SocketMessage& message) {
    const auto* text = std::get_if<QString>(&message);
    return text ? *text : textFromUtf8(std::get<QByteArray>(message));
}

std::optional<ZofraLiveTrackData> liveTrackInFrame(const QString& text, RadioStation station) {
    if (text.isEmpty())
        return std::nullopt;
    JsonBudget budget;
    const auto document = parseJsonText(text.sliced(1).toUtf8(), budget);
    const auto elements =
        document && document->isArray() ? fromJson<QStringList>(document->array()) : std::nullopt;
    if (!elements)
        return std::nullopt;
    // The last usable one counts, so look from the end and stop there.
    for (auto element = elements->crbegin(); element != elements->crend(); ++element) {
        if (auto track = liveTrackInElement(*element, station, budget))
            return track;
    }
    return std::nullopt;
}

std::optional<QString> joinMessage(RadioStation station) {
    const auto id = station.liveSocketId();
    if (!id)
        return std::nullopt;
    const QJsonObject subscription{
        {u"station"_qs, *id}, {u"entity"_qs, u"plays"_qs}, {u"action"_qs, u"play"_qs}};
    const QJsonObject join{
        {u"action"_qs, u"join"_qs}, {u"id"_qs, 1}, {u"sub"_qs, subscription}, {u"backlog"_qs, 1}};
    return compactJson(QJsonArray{compactJson(join)});
}

std::optional<QUrl> liveSocketUrl(const QString& host) {
    const auto server = QString::number(QRandomGenerator::global()->bounded(900) + 100);
    const auto session = QUuid::createUuid().toString(QUuid::Id128);
    return serviceUrl(u"wss"_qs, host, u"/api/"_qs + server + u'/' + session + u"/websocket"_qs);
}

} // namespace zofra
