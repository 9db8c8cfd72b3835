// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusReport.h"

#include "app/VolumePercent.h"
#include "platform/ForeignText.h"
#include "stations/texts/InterfaceTexts.h"

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <utility>

namespace zofra {

namespace {

QString toolTip(const RadioState& state, const LanguageManager& languages) {
    QStringList lines{languages.tooltipStation(state.station.displayName(), state.station.genre()),
                      languages.nowPlayingHeader(withoutLineBreaks(state.currentSong))};
    if (const auto next = state.upNext())
        lines.append(languages.upNextHeader(withoutLineBreaks(*next)));
    lines.append(languages.tooltipOutput(state.targetTitle));
    lines.append(languages.tooltipStatus(state.isPlaying));
    return lines.join(u'\n');
}

QString outputId(const AudioOutputTarget& target) {
    if (target == AudioOutputTarget::localMac())
        return u"here"_qs;
    return target == AudioOutputTarget::sonosEverywhere() ? u"everywhere"_qs : target.roomId();
}

QString playbackName(const RadioState& state) {
    if (!state.isPlaying)
        return u"stopped"_qs;
    return state.isBuffering ? u"buffering"_qs : u"playing"_qs;
}

QJsonObject barObject(const QString& text, const QString& toolTip, const QString& playback, int percent) {
    return {
        {u"text"_qs, text}, {u"tooltip"_qs, toolTip}, {u"class"_qs, playback}, {u"percentage"_qs, percent}};
}

QString lineOf(const QString& name, const QString& value) {
    return (name + u": "_qs + value).trimmed();
}

QString shownValue(const QJsonValue& value) {
    if (value.isBool())
        return value.toBool() ? u"yes"_qs : u"no"_qs;
    if (value.isDouble())
        return QString::number(value.toDouble());
    if (!value.isArray())
        return visibleText(value.toString());
    QStringList titles;
    const QJsonArray rooms = value.toArray();
    for (const auto& room : rooms)
        titles.append(visibleText(room.toObject().value(u"title").toString()));
    return titles.join(u", "_qs);
}

/// What is told of changes, in its order: name and value.
std::array<std::pair<QString, QString>, 8> toldValues(const RadioState& state) {
    QStringList titles;
    for (const auto& room : state.rooms)
        titles.append(visibleText(room.title));
    const QString rooms = u"%1 (%2)"_qs.arg(QString::number(titles.size()), titles.join(u", "_qs));
    return {{{u"station"_qs, state.station.displayName()},
             {u"song"_qs, visibleText(state.currentSong)},
             {u"next"_qs, visibleText(state.upNext().value_or(QString()))},
             {u"state"_qs, playbackName(state)},
             {u"output"_qs, visibleText(state.targetTitle)},
             {u"rooms"_qs, titles.isEmpty() ? u"0"_qs : rooms},
             {u"volume"_qs, u"%1 %"_qs.arg(shownVolumePercent(state.volume))},
             {u"language"_qs, rawValue(state.language)}}};
}

/// What a new listener need not be told.
bool isNothing(const QString& name, const QString& value) {
    return value.isEmpty() || (name == u"rooms" && value == u"0");
}

} // namespace

StatusButtonContent statusButtonContent(const RadioState& state, const LanguageManager& languages) {
    return {state.station.displayName() + u": "_qs + state.currentSong,
            state.isPlaying ? u"speaker.wave.2.fill"_qs : u"play.fill"_qs,
            (state.isPlaying ? texts::playing : texts::paused).in(state.language), toolTip(state, languages)};
}

QJsonObject toJson(const RadioState& state, const QString& version, TimePoint now) {
    QJsonArray rooms;
    for (const auto& [room, title] : state.rooms)
        rooms.append(
            QJsonObject{{u"id"_qs, room.id()}, {u"title"_qs, title}, {u"players"_qs, room.speakers.size()}});
    const auto next = state.upNext();
    // The shortest decimal number, not the nearest 64-bit one. A stored volume may lie above 1.
    const double volume =
        std::clamp(QString::number(static_cast<double>(state.volume), 'g', 7).toDouble(), 0.0, 1.0);
    QJsonObject object{{u"station"_qs, state.station.rawValue()},
                       {u"playing"_qs, state.isPlaying},
                       {u"buffering"_qs, state.isBuffering},
                       {u"volume"_qs, volume},
                       {u"output"_qs, outputId(state.target)},
                       {u"output_title"_qs, state.targetTitle},
                       {u"song"_qs, state.currentSong},
                       {u"next"_qs, next ? QJsonValue(*next) : QJsonValue()},
                       {u"language"_qs, rawValue(state.language)},
                       {u"rooms"_qs, rooms},
                       {u"scanning"_qs, state.isScanning},
                       {u"network_denied"_qs, state.isLocalNetworkDenied},
                       {u"tray"_qs, statusItemModeName(state.tray)},
                       {u"version"_qs, version}};
    if (state.stopsAt) {
        const auto left = std::chrono::ceil<std::chrono::seconds>(*state.stopsAt - now);
        object.insert(u"stops_in"_qs, std::max<qint64>(left.count(), 0));
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
    const QJsonValue left = report.value(u"stops_in");
    if (!left.isUndefined())
        lines.append(u"stops_in: %1 s"_qs.arg(left.toInteger()));
    return lines.join(u'\n');
}

QJsonObject barLine(const RadioState& state, const LanguageManager& languages) {
    const auto button = statusButtonContent(state, languages);
    return barObject(shownLine(state.isPlaying ? button.title : state.station.displayName()),
                     shownLines(button.toolTip), playbackName(state), shownVolumePercent(state.volume));
}

QJsonObject emptyBarLine() {
    return barObject({}, {}, u"off"_qs, 0);
}

QString plainBarLine(const QJsonObject& line) {
    return line.value(u"text").toString().replace(QLatin1String("%{"), QLatin1String("% {"));
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
