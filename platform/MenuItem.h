// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <any>
#include <functional>
#include <vector>

namespace zofra {

struct MenuItem;
/// A menu: its items from top to bottom.
using Menu = std::vector<MenuItem>;

/// One item of a menu, as a plain value. Whoever shows it may drop what it cannot show, but adds nothing.
/// Texts are data: nothing in them is markup or a mnemonic.
struct MenuItem {
    enum class Kind { action, separator };
    /// Items that can be checked are `off` or `on`, all others `none`.
    enum class CheckState { none, off, on };

    Kind kind = Kind::action;
    QString title{};
    bool isEnabled = true;
    CheckState state = CheckState::none;
    /// A name of the program's own drawings, for example "play.fill"; empty for none.
    QString iconName{};
    /// What the icon says to those who do not see it.
    QString iconDescription{};
    QString toolTip{};
    /// A letter that chooses the item together with the platform's command key; empty for none.
    QString keyEquivalent{};
    Menu submenu{};
    /// The value that the item stands for; empty for most items.
    std::any representedObject{};
    /// Called with the item itself. Empty where choosing does nothing.
    std::function<void(const MenuItem& sender)> action{};
    /// Name of the action, for records and tests; empty where there is none.
    QString actionName{};
    /// Tells items of the same title and action apart, for example by a room's id; empty for most items.
    QString identity{};

    [[nodiscard]] static MenuItem separator() { return {.kind = Kind::separator}; }
    [[nodiscard]] bool isSeparator() const { return kind == Kind::separator; }
};

/// Goes to the line of what is chosen now, in a menu of widgets: whoever opens choices with the keyboard
/// starts there.
template<typename Widget>
void goToChosen(Widget& menu) {
    for (auto* line : menu.actions()) {
        if (line->isChecked())
            menu.setActiveAction(line);
    }
}

} // namespace zofra
