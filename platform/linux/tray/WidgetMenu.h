// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MenuItem.h"
#include "platform/linux/tray/IconProvider.h"

#include <QMenu>
#include <QPoint>
#include <QRect>
#include <QSize>

#include <memory>

namespace zofra {

/// A menu drawn by this program; deletes itself once closed if shown by `popUpAndForget`. Main thread only.
class WidgetMenu final : public QMenu {
public:
    WidgetMenu(const Menu& menu, const IconProvider& icons, QWidget* parent = nullptr);
    ~WidgetMenu() override;

    /// Shows the menu beside `anchor` (in screen pixels), inside of what panels leave free.
    void popUpAndForget(QPoint anchor);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    WidgetMenu(const Menu& menu, const IconProvider& icons, std::shared_ptr<QStyle> style, QWidget* parent);
    void addItem(const MenuItem& item, const IconProvider& icons);

    std::shared_ptr<QStyle> m_style;
};

/// The upper left corner of a menu of `size` that belongs to `anchor` and keeps inside `available`: below the
/// anchor where there is room, else above it.
[[nodiscard]] QPoint menuCorner(QPoint anchor, QSize size, QRect available);

} // namespace zofra
