// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"
#include "app/panel/LanguageButton.h"
#include "app/panel/PanelLook.h"

#include <array>
#include <optional>

class QBoxLayout;

namespace zofra {

class CheckBox;
class CreditLine;
class ElidedLabel;
class IconLabel;
class MenuButton;
class PlayButton;
class SongCard;
class TextButton;
class VolumeSlider;

/// What the panel is put together from, from top to bottom, and how it shows a state. The parts belong to the
/// panel and are made anew when sizes change. Main thread only.
class PanelParts {
public:
    /// Builds the panel `panel`, whatever it had been built from before; `look` is the panel's.
    PanelParts(QWidget& panel, const PanelLook& look, const QString& version);

    /// Brings every part up to date. Only what differs repaints.
    void show(const RadioState& state);
    /// How wide the panel has to be for every language.
    [[nodiscard]] int width() const { return m_width; }

    std::array<LanguageButton*, allAppLanguages.size()> languages{};
    MenuButton* station = nullptr;
    MenuButton* output = nullptr;
    PlayButton* play = nullptr;
    VolumeSlider* volume = nullptr;
    CreditLine* credit = nullptr;
    CheckBox* launchAtLogin = nullptr;
    TextButton* close = nullptr;

private:
    void addHeader(QBoxLayout& rows, const QString& version);
    void addLanguages(QBoxLayout& rows);
    MenuButton* addMenuRow(QBoxLayout& rows, const QString& icon, ElidedLabel*& label);
    void addPlay(QBoxLayout& rows);
    void addVolume(QBoxLayout& rows);
    void addFoot(QBoxLayout& rows);
    void showTexts(AppLanguage language);
    [[nodiscard]] int widestLanguage();

    QWidget& m_panel;
    const PanelLook& m_look;
    ElidedLabel* m_stationLabel = nullptr;
    SongCard* m_songs = nullptr;
    ElidedLabel* m_outputLabel = nullptr;
    IconLabel* m_speaker = nullptr;
    ElidedLabel* m_volumePercent = nullptr;
    /// The language of the texts as they stand; absent before the first state.
    std::optional<AppLanguage> m_shownLanguage;
    int m_width = 0;
};

} // namespace zofra
