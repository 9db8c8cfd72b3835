// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioControls.h"
#include "app/RadioState.h"
#include "platform/MenuItem.h"
#include "stations/texts/InterfaceTexts.h"

namespace zofra {

/// The lines of the panel's menus. What choosing one does goes to `controls`, which outlives them.
class PanelMenus {
public:
    /// Every station with name and genre.
    [[nodiscard]] static Menu stations(const RadioState& state, RadioControls& controls) {
        Menu menu;
        for (const RadioStation station : RadioStation::allCases)
            menu.push_back(choice(station.displayName() + u" – "_qs + station.genre(),
                                  onIf(station == state.station),
                                  [&controls, station] { controls.chooseStation(station); }));
        return menu;
    }

    /// This computer, the rooms or why there are none, everywhere, and what finds more.
    [[nodiscard]] static Menu outputs(const RadioState& state, RadioControls& controls) {
        const AppLanguage language = state.language;
        Menu menu{choice(texts::thisMac.in(language), onIf(state.target == AudioOutputTarget::localMac()),
                         [&controls] { controls.chooseThisComputer(); })};
        for (const auto& [room, title] : state.rooms) {
            menu.push_back(choice(title, onIf(state.target == AudioOutputTarget::sonos(room.id())),
                                  [&controls, id = room.id()] { controls.chooseRoom(id); }));
            menu.back().identity = room.id();
        }
        if (state.rooms.empty()) {
            menu.emplace_back().title = state.emptyStateMessage;
            menu.back().isEnabled = false;
        }
        menu.push_back(choice(texts::everywhere.in(language),
                              onIf(state.target == AudioOutputTarget::sonosEverywhere()),
                              [&controls] { controls.chooseEverywhere(); }));
        menu.back().toolTip = texts::synchronizationNote.in(language);
        menu.push_back(MenuItem::separator());
        menu.push_back(
            choice(texts::searchEntry.in(language), State::none, [&controls] { controls.search(); }));
        menu.push_back(choice(texts::allowLocalNetwork.in(language), State::none,
                              [&controls] { controls.openLocalNetworkSettings(); }));
        return menu;
    }

private:
    using State = MenuItem::CheckState;

    static State onIf(bool isCurrent) { return isCurrent ? State::on : State::off; }
    static MenuItem choice(const QString& title, State state, const std::function<void()>& act) {
        return {.title = title, .state = state, .action = [act](const MenuItem&) { act(); }};
    }
};

} // namespace zofra
