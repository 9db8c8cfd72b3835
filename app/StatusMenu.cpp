// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusMenu.h"

#include "app/VolumePercent.h"
#include "stations/texts/InterfaceTexts.h"

#include <array>
#include <cmath>
#include <utility>

namespace zofra {

namespace {

MenuItem actionItem(QString title, StatusMenuActions::Action action, const char* actionName) {
    return {.title = std::move(title),
            .action = std::move(action),
            .actionName = QString::fromLatin1(actionName)};
}

MenuItem disabledItem(QString title) {
    return {.title = std::move(title), .isEnabled = false};
}

MenuItem submenuItem(QString title, Menu submenu) {
    return {.title = std::move(title), .submenu = std::move(submenu)};
}

MenuItem withIcon(MenuItem item, const char* name, QString description = {}) {
    item.iconName = QString::fromLatin1(name);
    item.iconDescription = std::move(description);
    return item;
}

MenuItem::CheckState onIf(bool condition) {
    return condition ? MenuItem::CheckState::on : MenuItem::CheckState::off;
}

/// Builds the menu's parts for one state.
class Builder {
public:
    Builder(const RadioState& state, const LanguageManager& languages, const StatusMenuActions& actions)
        : m_state(state)
        , m_languages(languages)
        , m_actions(actions)
        , m_language(state.language) {}

    [[nodiscard]] MenuItem playStop() const {
        MenuItem item = actionItem((m_state.isPlaying ? texts::stopRadio : texts::playRadio).in(m_language),
                                   m_actions.togglePlayRadio, "togglePlayRadio");
        item.keyEquivalent = u"p"_qs;
        return withIcon(std::move(item), m_state.isPlaying ? "speaker.wave.2.fill" : "play.fill",
                        (m_state.isPlaying ? texts::stopIcon : texts::playIcon).in(m_language));
    }

    [[nodiscard]] MenuItem stations() const {
        Menu menu;
        for (const RadioStation station : RadioStation::allCases) {
            MenuItem item = actionItem(station.displayName() + u" – "_qs + station.genre(),
                                       m_actions.selectStationFromMenuItem, "selectStationFromMenuItem");
            item.representedObject = station;
            item.identity = station.rawValue();
            item.state = onIf(station == m_state.station);
            menu.push_back(std::move(item));
        }
        return withIcon(
            submenuItem(m_languages.stationMenuTitle(m_state.station.displayName()), std::move(menu)),
            "antenna.radiowaves.left.and.right", texts::stationIcon.in(m_language));
    }

    [[nodiscard]] MenuItem outputs() const {
        Menu menu;
        MenuItem local =
            actionItem(texts::thisMac.in(m_language), m_actions.selectOutputMac, "selectOutputMac");
        local.state = onIf(m_state.target == AudioOutputTarget::localMac());
        menu.push_back(std::move(local));
        menu.push_back(MenuItem::separator());
        appendRooms(menu);
        menu.push_back(MenuItem::separator());
        MenuItem everywhere = actionItem(texts::playEverywhere.in(m_language),
                                         m_actions.selectOutputEverywhere, "selectOutputEverywhere");
        everywhere.state = onIf(m_state.target == AudioOutputTarget::sonosEverywhere());
        everywhere.toolTip = texts::synchronizationNote.in(m_language);
        menu.push_back(std::move(everywhere));
        menu.push_back(MenuItem::separator());
        menu.push_back(actionItem(texts::searchItem.in(m_language), m_actions.rescanSonos, "rescanSonos"));
        return withIcon(submenuItem(m_languages.outputMenuTitle(m_state.targetTitle), std::move(menu)),
                        "hifispeaker.2.fill", texts::outputIcon.in(m_language));
    }

    [[nodiscard]] MenuItem volumes() const {
        const std::array<std::pair<QString, float>, 5> steps{{{u"100 %"_qs, 1.0F},
                                                              {u"75 %"_qs, 0.75F},
                                                              {u"50 %"_qs, 0.5F},
                                                              {u"25 %"_qs, 0.25F},
                                                              {texts::mute.in(m_language), 0.0F}}};
        Menu menu;
        for (const auto& [title, value] : steps) {
            MenuItem item = actionItem(title, m_actions.setVolumeFromMenuItem, "setVolumeFromMenuItem");
            item.representedObject = value;
            item.identity = QString::number(static_cast<double>(value));
            item.state = onIf(std::fabs(m_state.volume - value) < 0.12F);
            menu.push_back(std::move(item));
        }
        return withIcon(
            submenuItem(m_languages.volumeMenuTitle(shownVolumePercent(m_state.volume)), std::move(menu)),
            "speaker.wave.2.fill", texts::volume.in(m_language));
    }

    void appendSongs(Menu& menu) const {
        menu.push_back(withIcon(disabledItem(m_languages.nowPlayingHeader(m_state.currentSong)), "music.note",
                                texts::nowPlayingIcon.in(m_language)));
        if (const auto upNext = m_state.upNext())
            menu.push_back(withIcon(disabledItem(m_languages.upNextHeader(*upNext)), "forward.end.fill",
                                    texts::upNextIcon.in(m_language)));
    }

    [[nodiscard]] MenuItem about() const {
        return withIcon(actionItem(texts::about.in(m_language), m_actions.showAboutWindow, "showAboutWindow"),
                        "info.circle");
    }

    [[nodiscard]] MenuItem quit() const {
        return withIcon(actionItem(texts::quit.in(m_language), m_actions.quit, "quit"), "power");
    }

private:
    void appendRooms(Menu& menu) const {
        if (m_state.rooms.empty()) {
            menu.push_back(disabledItem(m_state.emptyStateMessage));
            if (m_state.isLocalNetworkDenied)
                menu.push_back(actionItem(texts::allowLocalNetwork.in(m_language),
                                          m_actions.openLocalNetworkSettings, "openLocalNetworkSettings"));
            return;
        }
        for (const auto& [room, title] : m_state.rooms) {
            MenuItem item = actionItem(title, m_actions.selectOutputSonos, "selectOutputSonos");
            item.representedObject = room;
            item.identity = room.id();
            item.state = onIf(m_state.target == AudioOutputTarget::sonos(room.id()));
            menu.push_back(std::move(item));
        }
    }

    const RadioState& m_state;
    const LanguageManager& m_languages;
    const StatusMenuActions& m_actions;
    AppLanguage m_language;
};

} // namespace

Menu statusMenu(const RadioState& state, const LanguageManager& languages, const StatusMenuActions& actions) {
    const Builder builder(state, languages, actions);
    Menu menu;
    menu.push_back(builder.playStop());
    menu.push_back(builder.stations());
    menu.push_back(builder.outputs());
    menu.push_back(builder.volumes());
    menu.push_back(MenuItem::separator());
    builder.appendSongs(menu);
    menu.push_back(MenuItem::separator());
    menu.push_back(builder.about());
    menu.push_back(MenuItem::separator());
    menu.push_back(builder.quit());
    return menu;
}

} // namespace zofra
