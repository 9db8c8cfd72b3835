// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"
#include "app/panel/PanelMenu.h"

#include <functional>

namespace zofra {

/// A borderless button whose title is what is chosen now and which opens the menu to choose from. A long
/// title is cut with an ellipsis and shown whole on hover.
class MenuButton final : public PanelButton {
public:
    MenuButton(const PanelLook& look, QWidget* parent);

    /// `label` is what stands before the button, for screen readers.
    void setContent(const QString& label, const QString& title);

    /// Makes the lines; asked each time the menu opens.
    std::function<Menu()> makeEntries;
    /// Brings an open menu up to date.
    void refreshMenu();
    /// Opens the menu, on the line of what is chosen now.
    void openMenu();
    [[nodiscard]] bool isOpen() const { return m_menu && m_menu->isVisible(); }
    /// Null until first opened.
    [[nodiscard]] PanelMenu* openedMenu() const { return m_menu; }

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    [[nodiscard]] QSize bodySize() const override;
    void paintBody(QPainter& painter, const QRect& body) override;
    [[nodiscard]] QStringList helpLines() const override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void makeMenu();
    void tellOpen();
    [[nodiscard]] QRect titleRect(const QRect& body) const;
    [[nodiscard]] qreal chevronRoom() const;

    PanelMenu* m_menu = nullptr;
};

} // namespace zofra
