// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MenuItem.h"
#include "platform/linux/tray/DBusMenuTree.h"

#include <QMenu>
#include <QString>

namespace zofra::test {

enum class Detail {
    /// Everything the model says.
    model,
    /// What both ways of showing a menu carry.
    shown,
};

/// A menu as text, a line for each item.
[[nodiscard]] QString dump(const Menu& menu, Detail detail);
/// The same from what a panel is given over the bus.
[[nodiscard]] QString dump(const BusMenuLayout& root);
/// The same from what the program itself draws.
[[nodiscard]] QString dump(const QMenu& menu);

} // namespace zofra::test
