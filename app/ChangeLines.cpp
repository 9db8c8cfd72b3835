// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ChangeLines.h"

#include "app/VolumePercent.h"
#include "platform/ForeignText.h"

#include <array>

namespace zofra {

namespace {

QString playback(const RadioState& state) {
    if (!state.isPlaying)
        return QStringLiteral("stopped");
    return state.isBuffering ? QStringLiteral("buffering") : QStringLiteral("playing");
}

QString rooms(const RadioState& state) {
    if (state.rooms.empty())
        return QStringLiteral("0");
    QStringList titles;
    for (const auto& room : state.rooms)
        titles.append(visibleText(room.title));
    return QStringLiteral("%1 (%2)").arg(titles.size()).arg(titles.join(QStringLiteral(", ")));
}

/// What is told, in its order: name and value. What a new listener need not be told is empty.
std::array<std::pair<QString, QString>, 8> values(const RadioState& state) {
    return {{{QStringLiteral("station"), state.station.displayName()},
             {QStringLiteral("song"), visibleText(state.currentSong)},
             {QStringLiteral("next"), visibleText(state.upNext().value_or(QString()))},
             {QStringLiteral("state"), playback(state)},
             {QStringLiteral("output"), visibleText(state.targetTitle)},
             {QStringLiteral("rooms"), rooms(state)},
             {QStringLiteral("volume"), QStringLiteral("%1 %").arg(shownVolumePercent(state.volume))},
             {QStringLiteral("language"), rawValue(state.language)}}};
}

bool isNothing(const QString& name, const QString& value) {
    return value.isEmpty() || (name == QLatin1String("rooms") && value == QLatin1String("0"));
}

} // namespace

QStringList ChangeLines::update(const RadioState& state) {
    const auto now = values(state);
    const auto before = m_last ? std::optional(values(*m_last)) : std::nullopt;
    QStringList lines;
    for (std::size_t i = 0; i < now.size(); ++i) {
        const auto& [name, value] = now[i];
        if (before ? (*before)[i].second != value : !isNothing(name, value))
            lines.append((name + QStringLiteral(": ") + value).trimmed());
    }
    m_last = state;
    return lines;
}

} // namespace zofra
