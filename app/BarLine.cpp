// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/BarLine.h"

#include "app/StatusButtonContent.h"
#include "app/VolumePercent.h"
#include "platform/ForeignText.h"

namespace zofra {

namespace {

QString playbackClass(const RadioState& state) {
    if (!state.isPlaying)
        return QStringLiteral("stopped");
    return state.isBuffering ? QStringLiteral("buffering") : QStringLiteral("playing");
}

QJsonObject object(const QString& text, const QString& toolTip, const QString& playback, int percent) {
    return {{QStringLiteral("text"), text},
            {QStringLiteral("tooltip"), toolTip},
            {QStringLiteral("class"), playback},
            {QStringLiteral("percentage"), percent}};
}

} // namespace

QJsonObject barLine(const RadioState& state, const LanguageManager& languages) {
    const auto button = statusButtonContent(state, languages);
    return object(shownLine(state.isPlaying ? button.title : state.station.displayName()),
                  shownLines(button.toolTip), playbackClass(state), shownVolumePercent(state.volume));
}

QJsonObject emptyBarLine() {
    return object({}, {}, QStringLiteral("off"), 0);
}

QString plainBarLine(const QJsonObject& line) {
    return line.value(QLatin1String("text")).toString().replace(QLatin1String("%{"), QLatin1String("% {"));
}

} // namespace zofra
