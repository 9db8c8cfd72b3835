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
    [[nodiscard]] const QString& title() const { return m_title; }
    /// Shown on hover and read by screen readers after the title.
    void setHelp(const QString& help);

    /// Makes the lines; asked each time the menu opens.
    std::function<QList<PanelMenuEntry>()> makeEntries;
    std::function<void(const PanelMenuEntry&)> onChosen;
    /// Brings an open menu up to date.
    void refreshMenu();
    void openMenu();
    /// Null until first opened.
    [[nodiscard]] PanelMenu* openedMenu() const { return m_menu; }

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    [[nodiscard]] QSize bodySize() const override;
    void paintBody(QPainter& painter, const QRect& body) override;
    [[nodiscard]] qreal radius() const override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    [[nodiscard]] QRect titleRect(const QRect& body) const;
    [[nodiscard]] bool isElided() const;

    QString m_title;
    QString m_help;
    PanelMenu* m_menu = nullptr;
};

} // namespace zofra
