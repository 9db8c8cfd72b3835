// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MenuItem.h"

#include <QPointF>
#include <QString>

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// Mouse events that a status-bar button can send its action on. The values are bit masks.
enum class ButtonEvent : unsigned { leftMouseUp = 1U << 2U, rightMouseUp = 1U << 4U };

/// Where a button draws its image.
enum class ImagePosition { leading };

/// The button of a status item: what it shows, and what a click on it does. Main thread only.
class StatusItemButton {
public:
    /// Receives the event that is being handled; absent when the button was pressed by other means.
    using Action = std::function<void(std::optional<ButtonEvent> currentEvent)>;
    virtual ~StatusItemButton() = default;

    virtual void setAction(Action action) = 0;
    /// A combination of ButtonEvent values.
    virtual void sendActionOn(unsigned eventMask) = 0;

    virtual void setTitle(const QString& title) = 0;
    virtual void setImagePosition(ImagePosition position) = 0;
    /// `symbolName` is a name of the program's own drawings, for example "play.fill".
    virtual void setImage(const QString& symbolName, const QString& accessibilityDescription) = 0;
    /// Lines are separated by line feeds.
    virtual void setToolTip(const QString& toolTip) = 0;

    /// Height in pixels of the button's own coordinates.
    [[nodiscard]] virtual double height() const = 0;
    /// Shows a menu whose upper corner is at `location`, in the button's coordinates, downwards from the top.
    virtual void popUpMenu(const Menu& menu, QPointF location) = 0;
};

/// How the program is reached in the status bar.
enum class StatusItemMode {
    /// Nowhere (yet).
    none,
    /// The panel passes clicks on to us.
    direct,
    /// The panel draws our menu.
    hostmenu,
    /// The old tray of X11.
    xembed,
    /// There is no tray; a window stands in.
    window,
};
/// "direct", "hostmenu", "xembed", "window" or "none".
[[nodiscard]] inline QString statusItemModeName(StatusItemMode mode) {
    static constexpr std::array names{"none", "direct", "hostmenu", "xembed", "window"};
    return QString::fromLatin1(names.at(static_cast<std::size_t>(mode)));
}

/// An item in the system's status bar. Destroying it removes it. Main thread only, handlers included.
class StatusItem {
public:
    virtual ~StatusItem() = default;
    /// Null where the item has none; owned by the item.
    [[nodiscard]] virtual StatusItemButton* button() = 0;

    /// Asked for the current menu where it is the panel that opens and draws it.
    std::function<Menu()> menuProvider;
    /// The wheel was turned over the item: positive away from the user, in steps of one notch.
    std::function<void(int steps)> onScroll;
    /// The user asked for the window by a second way of clicking.
    std::function<void()> onSecondaryActivate;
    /// There is no status bar in which the item could be shown.
    std::function<void()> onUnavailable;
    /// There is one, or one again.
    std::function<void()> onAvailable;

    /// What `menuProvider` answers may have changed. Cheap; may be called often.
    virtual void menuDidChange() = 0;
    /// Shows for a moment that the volume is now `percent`, which `text` says.
    virtual void flashVolume(int percent, const QString& text) = 0;
    /// Whether what is meant to play is still awaited: the image tells it.
    virtual void setBuffering(bool isBuffering) = 0;
    [[nodiscard]] virtual StatusItemMode mode() const = 0;
};

/// The system's status bar. Main thread only.
class StatusBar {
public:
    /// As long as the item's content asks for.
    static constexpr double variableLength = -1;

    virtual ~StatusBar() = default;
    [[nodiscard]] virtual std::unique_ptr<StatusItem> statusItem(double length) = 0;
};

} // namespace zofra
