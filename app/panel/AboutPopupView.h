// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/PopupWindow.h"
#include "app/RadioStateSource.h"
#include "app/panel/AppearanceSource.h"
#include "app/panel/PanelLook.h"
#include "platform/LoginItem.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "platform/SystemLog.h"
#include "platform/Workspace.h"

#include <functional>
#include <memory>

namespace zofra {

class PanelParts;

/// What the panel needs from outside besides the objects it shows; all of it outlives the panel.
struct PanelEnvironment {
    LoginItem& loginItem;
    MainQueue& mainQueue;
    StandardOutput& output;
    Workspace& workspace;
    AppearanceSource& appearance;
    /// Shows a menu that belongs to `window`, at a point of the screen.
    std::function<void(const Menu& menu, QPoint at, QWidget& window)> popUpMenu = nullptr;
};

/// The popup panel, a window of its own: shows the state of the observed objects and changes it through the
/// controls. However much changes in one turn of the main queue, the panel is brought up to date once, in the
/// next, and repaints only what differs. Always as large as its content wants to be. Main thread only.
class AboutPopupView final : public QWidget {
public:
    AboutPopupView(PopupPanelContent content, const PanelEnvironment& environment, QWidget* parent = nullptr);
    ~AboutPopupView() override;

    /// Told when the window has been closed.
    std::function<void()> onClosed;
    /// Takes the sizes that fit `screen`, and stands in its middle when shown.
    void centerOn(QScreen* screen);

    /// Whether a person has turned to the window since it was shown.
    [[nodiscard]] bool wasUsed() const { return m_wasUsed; }
    /// What the check box shows; read from the login item when the panel appears.
    [[nodiscard]] bool launchAtLogin() const { return m_launchAtLogin; }
    /// How often the panel was brought up to date so far.
    [[nodiscard]] int refreshCount() const { return m_refreshCount; }
    [[nodiscard]] const PanelLook& look() const { return m_look; }

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void build();
    void connectParts();
    void refresh(const RadioState& state);
    void updateNaturalSize();
    void updateLook();
    void askToClose();
    void showMenu(QPoint at);
    void showMenuAtFocus();
    void launchAtLoginToggled(bool isOn);
    /// Registers or unregisters the program where needed; a failure is one line on standard output.
    void updateLaunchAtLogin(bool enabled);
    void showLaunchAtLogin();

    PopupPanelContent m_content;
    PanelEnvironment m_environment;
    RadioStateSource m_source;
    PanelLook m_look;
    std::unique_ptr<PanelParts> m_parts;
    bool m_launchAtLogin = false;
    bool m_wasUsed = false;
    bool m_isRebuildScheduled = false;
    int m_refreshCount = 0;
    ObservationToken m_stateChanged;
    ObservationToken m_appearanceChanged;
};

} // namespace zofra
