// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusReport.h"

#include "platform/ForeignText.h"

#include <QJsonArray>
#include <QStringList>

#include <algorithm>
#include <array>

namespace zofra {

namespace {

QString outputId(const AudioOutputTarget& target) {
    switch (target.kind()) {
    case AudioOutputTarget::Kind::sonos:
        return target.roomId();
    case AudioOutputTarget::Kind::sonosEverywhere:
        return QStringLiteral("everywhere");
    case AudioOutputTarget::Kind::localMac:
        break;
    }
    return QStringLiteral("here");
}

QString shownValue(const QJsonValue& value) {
    if (value.isBool())
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    if (value.isDouble())
        return QString::number(value.toDouble());
    if (!value.isArray())
        return visibleText(value.toString());
    QStringList titles;
    const QJsonArray rooms = value.toArray();
    for (const auto& room : rooms)
        titles.append(visibleText(room.toObject().value(QLatin1String("title")).toString()));
    return titles.join(QStringLiteral(", "));
}

} // namespace

QJsonObject toJson(const RadioState& state, const QString& version, TimePoint now) {
    QJsonArray rooms;
    for (const auto& [room, title] : state.rooms)
        rooms.append(QJsonObject{{QStringLiteral("id"), room.id()},
                                 {QStringLiteral("title"), title},
                                 {QStringLiteral("players"), room.speakers.size()}});
    const auto next = state.upNext();
    // The shortest decimal number that is this volume, not the nearest 64-bit one. A stored volume may lie
    // above 1.
    const double volume =
        std::clamp(QString::number(static_cast<double>(state.volume), 'g', 7).toDouble(), 0.0, 1.0);
    QJsonObject object{{QStringLiteral("station"), state.station.rawValue()},
                       {QStringLiteral("playing"), state.isPlaying},
                       {QStringLiteral("buffering"), state.isBuffering},
                       {QStringLiteral("volume"), volume},
                       {QStringLiteral("output"), outputId(state.target)},
                       {QStringLiteral("output_title"), state.targetTitle},
                       {QStringLiteral("song"), state.currentSong},
                       {QStringLiteral("next"), next ? QJsonValue(*next) : QJsonValue()},
                       {QStringLiteral("language"), rawValue(state.language)},
                       {QStringLiteral("rooms"), rooms},
                       {QStringLiteral("scanning"), state.isScanning},
                       {QStringLiteral("network_denied"), state.isLocalNetworkDenied},
                       {QStringLiteral("tray"), statusItemModeName(state.tray)},
                       {QStringLiteral("version"), version}};
    if (state.stopsAt) {
        const auto left = std::chrono::ceil<std::chrono::seconds>(*state.stopsAt - now);
        object.insert(QStringLiteral("stops_in"), std::max<qint64>(left.count(), 0));
    }
    return object;
}

QString statusLines(const QJsonObject& report) {
    static constexpr std::array keys{"station",      "playing",        "buffering", "volume",   "output",
                                     "output_title", "song",           "next",      "language", "rooms",
                                     "scanning",     "network_denied", "tray",      "version"};
    QStringList lines;
    for (const char* key : keys) {
        const QString name = QString::fromLatin1(key);
        lines.append((name + QStringLiteral(": ") + shownValue(report.value(name))).trimmed());
    }
    // There only while the music is to be stopped.
    const QJsonValue left = report.value(QLatin1String("stops_in"));
    if (!left.isUndefined())
        lines.append(QStringLiteral("stops_in: %1 s").arg(left.toInteger()));
    return lines.join(QLatin1Char('\n'));
}

} // namespace zofra
