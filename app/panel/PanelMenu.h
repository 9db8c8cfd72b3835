// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"
#include "platform/MenuItem.h"

#include <QMenu>

#include <memory>

namespace zofra {

/// A menu in the panel's look that belongs to one of its buttons. Can change while it is open. What is not
/// enabled is said, in small print; of what can be checked, the current item carries the drawing "checkmark".
class PanelMenu final : public QMenu {
public:
    PanelMenu(const PanelLook& look, QWidget* owner);
    ~PanelMenu() override;

    /// Shows these items; a menu that looks the same is left alone.
    void setEntries(const Menu& entries);

private:
    void addEntry(const MenuItem& entry);

    const PanelLook& m_look;
    std::unique_ptr<QStyle> m_style;
    Menu m_entries;
};

} // namespace zofra
