// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusButtonContent.h"

#include "platform/ForeignText.h"
#include "stations/texts/InterfaceTexts.h"

#include <QStringList>

namespace zofra {

namespace {

QString toolTip(const RadioState& state, const LanguageManager& languages) {
    QStringList lines{languages.tooltipStation(state.station.displayName(), state.station.genre()),
                      languages.nowPlayingHeader(withoutLineBreaks(state.currentSong))};
    if (const auto next = state.upNext())
        lines.append(languages.upNextHeader(withoutLineBreaks(*next)));
    lines.append(languages.tooltipOutput(state.targetTitle));
    lines.append(languages.tooltipStatus(state.isPlaying));
    return lines.join(QLatin1Char('\n'));
}

} // namespace

StatusButtonContent statusButtonContent(const RadioState& state, const LanguageManager& languages) {
    return {state.station.displayName() + QStringLiteral(": ") + state.currentSong,
            state.isPlaying ? QStringLiteral("speaker.wave.2.fill") : QStringLiteral("play.fill"),
            (state.isPlaying ? texts::playing : texts::paused).in(state.language), toolTip(state, languages)};
}

} // namespace zofra
