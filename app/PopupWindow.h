// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioObjects.h"
#include "platform/MenuItem.h"

#include <QString>

#include <functional>
#include <memory>

namespace zofra {

class RadioControls;

/// What the popup panel is built with. All objects outlive the panel.
struct PopupPanelContent {
    /// For example "1.0 (Build 1)".
    QString version;
    /// What it shows.
    RadioObjects objects;
    /// Closes the window that hosts the panel.
    std::function<void()> onClose;
    /// Reaches the acts.
    RadioControls& controls;
    /// The status bar's menu as it is now, for whoever asks for it here: there may be no status bar.
    std::function<Menu()> menu = nullptr;
};

/// Parts of a window's frame, as bit masks.
enum class WindowStyle : unsigned { titled = 1U << 0U, closable = 1U << 1U };

/// The window that hosts the popup panel; as large as the panel wants to be. Main thread only. It is
/// destroyed from within its own `onWillClose` or the panel's `onClose`: what is still on the stack then must
/// be deleted later.
class PopupWindow {
public:
    virtual ~PopupWindow() = default;

    virtual void setTitle(const QString& title) = 0;
    /// A combination of WindowStyle values.
    virtual void setStyle(unsigned styleMask) = 0;
    virtual void center() = 0;
    /// Shows the window, brings it to front and gives it the keyboard.
    virtual void makeKeyAndOrderFront() = 0;
    /// Shows the window and leaves the keyboard where it is: nobody has asked for it.
    virtual void orderFront() = 0;
    /// Whether a person has turned to it since it was shown.
    [[nodiscard]] virtual bool wasUsed() const = 0;
    /// Closes the window; tells `onWillClose`.
    virtual void close() = 0;

    /// The window is about to close, by its close button, Escape or `close`. Told once.
    std::function<void(PopupWindow& closing)> onWillClose;
};

/// Makes the window with the panel in it, not yet shown.
class PopupWindowFactory {
public:
    virtual ~PopupWindowFactory() = default;
    [[nodiscard]] virtual std::unique_ptr<PopupWindow> makeWindow(PopupPanelContent content) = 0;
};

} // namespace zofra
