// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusReport.h"

#include "app/StatusButtonContent.h"
#include "app/VolumePercent.h"
#include "platform/ForeignText.h"

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <utility>

namespace zofra {

namespace {

QString outputId(const AudioOutputTarget& target) {
    if (target == AudioOutputTarget::localMac())
        return QStringLiteral("here");
    return target == AudioOutputTarget::sonosEverywhere() ? QStringLiteral("everywhere") : target.roomId();
}

QString playbackName(const RadioState& state) {
    if (!state.isPlaying)
        return QStringLiteral("stopped");
    return state.isBuffering ? QStringLiteral("buffering") : QStringLiteral("playing");
}

QJsonObject barObject(const QString& text, const QString& toolTip, const QString& playback, int percent) {
    return {{QStringLiteral("text"), text},
            {QStringLiteral("tooltip"), toolTip},
            {QStringLiteral("class"), playback},
            {QStringLiteral("percentage"), percent}};
}

QString lineOf(const QString& name, const QString& value) {
    return (name + QStringLiteral(": ") + value).trimmed();
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

/// What is told of changes, in its order: name and value.
std::array<std::pair<QString, QString>, 8> toldValues(const RadioState& state) {
    QStringList titles;
    for (const auto& room : state.rooms)
        titles.append(visibleText(room.title));
    const QString rooms =
        QStringLiteral("%1 (%2)").arg(QString::number(titles.size()), titles.join(QStringLiteral(", ")));
    return {{{QStringLiteral("station"), state.station.displayName()},
             {QStringLiteral("song"), visibleText(state.currentSong)},
             {QStringLiteral("next"), visibleText(state.upNext().value_or(QString()))},
             {QStringLiteral("state"), playbackName(state)},
             {QStringLiteral("output"), visibleText(state.targetTitle)},
             {QStringLiteral("rooms"), titles.isEmpty() ? QStringLiteral("0") : rooms},
             {QStringLiteral("volume"), QStringLiteral("%1 %").arg(shownVolumePercent(state.volume))},
             {QStringLiteral("language"), rawValue(state.language)}}};
}

/// What a new listener need not be told.
bool isNothing(const QString& name, const QString& value) {
    return value.isEmpty() || (name == QLatin1String("rooms") && value == QLatin1String("0"));
}

} // namespace

QJsonObject toJson(const RadioState& state, const QString& version, TimePoint now) {
    QJsonArray rooms;
    for (const auto& [room, title] : state.rooms)
        rooms.append(QJsonObject{{QStringLiteral("id"), room.id()},
                                 {QStringLiteral("title"), title},
                                 {QStringLiteral("players"), room.speakers.size()}});
    const auto next = state.upNext();
    // The shortest decimal number, not the nearest 64-bit one. A stored volume may lie above 1.
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
        lines.append(lineOf(name, shownValue(report.value(name))));
    }
    // There only while the music is to be stopped.
    const QJsonValue left = report.value(QLatin1String("stops_in"));
    if (!left.isUndefined())
        lines.append(QStringLiteral("stops_in: %1 s").arg(left.toInteger()));
    return lines.join(QLatin1Char('\n'));
}

QJsonObject barLine(const RadioState& state, const LanguageManager& languages) {
    const auto button = statusButtonContent(state, languages);
    return barObject(shownLine(state.isPlaying ? button.title : state.station.displayName()),
                     shownLines(button.toolTip), playbackName(state), shownVolumePercent(state.volume));
}

QJsonObject emptyBarLine() {
    return barObject({}, {}, QStringLiteral("off"), 0);
}

QString plainBarLine(const QJsonObject& line) {
    return line.value(QLatin1String("text")).toString().replace(QLatin1String("%{"), QLatin1String("% {"));
}

QStringList ChangeLines::update(const RadioState& state) {
    const auto now = toldValues(state);
    const auto before = m_last ? std::optional(toldValues(*m_last)) : std::nullopt;
    QStringList lines;
    for (std::size_t i = 0; i < now.size(); ++i) {
        const auto& [name, value] = now[i];
        if (before ? (*before)[i].second != value : !isNothing(name, value))
            lines.append(lineOf(name, value));
    }
    m_last = state;
    return lines;
}

} // namespace zofra
