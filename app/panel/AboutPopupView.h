// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/PopupWindow.h"
#include "app/panel/AppearanceSource.h"
#include "app/panel/PanelActions.h"
#include "app/panel/PanelLook.h"
#include "platform/Observable.h"

#include <QWidget>

#include <array>
#include <memory>
#include <optional>

class QBoxLayout;

namespace zofra {

class CheckBox;
class CreditLine;
class ElidedLabel;
class IconLabel;
class LanguageButton;
class MenuButton;
class PlayButton;
class SongCard;
class TextButton;
class VolumeSlider;

/// What the panel needs from outside besides the objects it shows; all of it outlives the panel.
struct PanelEnvironment {
    LoginItem& loginItem;
    StandardOutput& output;
    Workspace& workspace;
    const IconSet& icons;
    AppearanceSource& appearance;
};

/// The popup panel: shows the state of the observed objects and changes it through their operations. However
/// many of their fields change in one turn of the event loop, the panel is brought up to date once, in the
/// next, and repaints only what differs. Always as large as its content wants to be. Main thread only.
class AboutPopupView final : public QWidget {
public:
    AboutPopupView(PopupPanelContent content, const PanelEnvironment& environment, QWidget* parent = nullptr);
    ~AboutPopupView() override;

    /// What the check box shows; read from the login item when the panel appears.
    [[nodiscard]] bool launchAtLogin() const { return m_launchAtLogin; }
    /// How often the panel was brought up to date so far.
    [[nodiscard]] int refreshCount() const { return m_refreshCount; }
    [[nodiscard]] const PanelLook& look() const { return m_look; }

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    /// The parts, from top to bottom. All are children of the panel and made anew when sizes change.
    struct Parts {
        std::array<LanguageButton*, allAppLanguages.size()> languages{};
        ElidedLabel* stationLabel = nullptr;
        MenuButton* station = nullptr;
        std::unique_ptr<SongCard> songs;
        ElidedLabel* outputLabel = nullptr;
        MenuButton* output = nullptr;
        PlayButton* play = nullptr;
        IconLabel* speaker = nullptr;
        VolumeSlider* volume = nullptr;
        ElidedLabel* volumePercent = nullptr;
        CreditLine* credit = nullptr;
        CheckBox* launchAtLogin = nullptr;
        TextButton* close = nullptr;
    };

    void build();
    void addHeader(QBoxLayout& rows);
    void addLanguages(QBoxLayout& rows);
    MenuButton* addMenuRow(QBoxLayout& rows, const QString& icon, ElidedLabel*& label);
    void addStation(QBoxLayout& rows);
    void addOutput(QBoxLayout& rows);
    void addPlay(QBoxLayout& rows);
    void addVolume(QBoxLayout& rows);
    void addFoot(QBoxLayout& rows);

    void observe();
    void scheduleRefresh();
    void refresh();
    void showTexts(AppLanguage language);
    void showState(AppLanguage language);
    void updateNaturalSize();
    void updateLook();
    void scheduleRebuild();
    void rebuild();
    void launchAtLoginToggled(bool isOn);
    void outputChosen(int command, const QString& roomId);

    PopupPanelContent m_content;
    PanelEnvironment m_environment;
    PanelActions m_actions;
    PanelLook m_look;
    Parts m_parts;
    bool m_launchAtLogin = false;
    /// The language of the texts as they stand; absent before the first refresh.
    std::optional<AppLanguage> m_shownLanguage;
    bool m_isRefreshScheduled = false;
    bool m_isRebuildScheduled = false;
    int m_refreshCount = 0;
    std::array<ObservationToken, 5> m_observations;
};

} // namespace zofra
