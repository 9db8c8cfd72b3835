// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelMenus.h"

#include "stations/texts/InterfaceTexts.h"

namespace zofra {

namespace {

using Kind = PanelMenuEntry::Kind;
using Mark = PanelMenuEntry::Mark;

Mark markOf(bool isCurrent) {
    return isCurrent ? Mark::on : Mark::off;
}

} // namespace

QList<PanelMenuEntry> stationMenuEntries(const RadioState& state, RadioControls& controls) {
    QList<PanelMenuEntry> entries;
    for (const RadioStation station : RadioStation::allCases)
        entries +=
            {Kind::choice, station.displayName() + QStringLiteral(" – ") + station.genre(),
             markOf(station == state.station), [&controls, station] { controls.chooseStation(station); }};
    return entries;
}

QList<PanelMenuEntry> outputMenuEntries(const RadioState& state, RadioControls& controls) {
    const AppLanguage language = state.language;
    QList<PanelMenuEntry> entries;
    entries +=
        {Kind::choice, texts::thisMac.in(language), markOf(state.target == AudioOutputTarget::localMac()),
         [&controls] { controls.chooseThisComputer(); }};
    for (const auto& [room, title] : state.rooms)
        entries += {Kind::choice, title, markOf(state.target == AudioOutputTarget::sonos(room.id())),
                    [&controls, id = room.id()] { controls.chooseRoom(id); }, room.id()};
    if (state.rooms.empty())
        entries += {Kind::message, state.emptyStateMessage, Mark::none, {}};
    entries += {Kind::choice, texts::everywhere.in(language),
                markOf(state.target == AudioOutputTarget::sonosEverywhere()),
                [&controls] { controls.chooseEverywhere(); }};
    entries.back().help = texts::synchronizationNote.in(language);
    entries += {Kind::separator, {}, Mark::none, {}};
    entries +=
        {Kind::choice, texts::searchEntry.in(language), Mark::none, [&controls] { controls.search(); }};
    entries += {Kind::choice, texts::allowLocalNetwork.in(language), Mark::none,
                [&controls] { controls.openLocalNetworkSettings(); }};
    return entries;
}

} // namespace zofra
