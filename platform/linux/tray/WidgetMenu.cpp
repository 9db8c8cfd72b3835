// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/WidgetMenu.h"

#include "platform/linux/tray/ShownText.h"

#include <QAction>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QScreen>
#include <QToolTip>

#include <algorithm>
#include <array>

namespace zofra {

namespace {

constexpr const char* toolTipProperty = "zofraToolTip";
constexpr int gap = 4;

QIcon menuIcon(const IconProvider& icons, const QString& symbolName, const QPalette& palette) {
    QIcon icon;
    for (const int pixels : std::array{16, 24, 32, 48}) {
        const auto add = [&](QIcon::Mode mode, QPalette::ColorGroup group, QPalette::ColorRole role) {
            const QImage image = icons.image(symbolName, pixels, palette.color(group, role));
            if (!image.isNull())
                icon.addPixmap(QPixmap::fromImage(image), mode);
        };
        add(QIcon::Normal, QPalette::Active, QPalette::WindowText);
        add(QIcon::Active, QPalette::Active, QPalette::HighlightedText);
        add(QIcon::Disabled, QPalette::Disabled, QPalette::WindowText);
    }
    return icon;
}

} // namespace

WidgetMenu::WidgetMenu(const Menu& menu, const IconProvider& icons, QWidget* parent)
    : QMenu(parent) {
    for (const MenuItem& item : menu)
        addItem(item, icons);
}

void WidgetMenu::addItem(const MenuItem& item, const IconProvider& icons) {
    if (item.isSeparator()) {
        addSeparator();
        return;
    }
    QAction* action = nullptr;
    if (item.submenu.empty()) {
        action = addAction(widgetMenuText(item.title));
    } else {
        auto* submenu = new WidgetMenu(item.submenu, icons, this);
        submenu->setTitle(widgetMenuText(item.title));
        action = addMenu(submenu);
    }
    action->setEnabled(item.isEnabled);
    action->setCheckable(item.state != MenuItem::CheckState::none);
    action->setChecked(item.state == MenuItem::CheckState::on);
    if (!item.iconName.isEmpty())
        action->setIcon(menuIcon(icons, item.iconName, palette()));
    action->setIconVisibleInMenu(true);
    action->setStatusTip(item.iconDescription);
    if (!item.keyEquivalent.isEmpty()) {
        action->setShortcut(QKeySequence(QLatin1String("Ctrl+") + item.keyEquivalent.toUpper()));
        action->setShortcutVisibleInContextMenu(true);
    }
    // An elided text is shown whole while the pointer rests on it.
    const bool isElided = shownLine(item.title) != shownLine(item.title, maxShownCharacters * 4);
    const QString toolTip = isElided ? shownLine(item.title, maxShownCharacters * 4) : item.toolTip;
    action->setProperty(toolTipProperty, toolTip);
    if (item.action)
        connect(action, &QAction::triggered, this, [item] { item.action(item); });
}

void WidgetMenu::popUpAndForget(QPoint anchor) {
    setAttribute(Qt::WA_DeleteOnClose);
    const QScreen* screen = QGuiApplication::screenAt(anchor);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    popup(screen ? menuCorner(anchor, sizeHint(), screen->availableGeometry()) : anchor);
    activateWindow();
}

bool WidgetMenu::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QMenu::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const QAction* action = actionAt(help->pos());
    const QString text = action ? action->property(toolTipProperty).toString() : QString();
    if (text.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(help->globalPos(), QStringLiteral("<p>%1</p>").arg(text.toHtmlEscaped()), this);
    return true;
}

void WidgetMenu::keyPressEvent(QKeyEvent* event) {
    // Menus know their items' letters, but not their shortcuts.
    const QKeySequence pressed(event->keyCombination());
    for (QAction* action : actions()) {
        if (action->isEnabled() && !action->shortcut().isEmpty() && action->shortcut() == pressed) {
            close();
            action->trigger();
            return;
        }
    }
    QMenu::keyPressEvent(event);
}

QPoint menuCorner(QPoint anchor, QSize size, QRect available) {
    const int below = std::max(anchor.y(), available.top());
    // As far above what the anchor belongs to as the anchor is below it.
    const int above = std::min(anchor.y() - 2 * gap, available.bottom() + 1) - size.height();
    const int lowest = available.bottom() + 1 - size.height();
    const int y = below <= lowest ? below : std::max(above, available.top());
    const int rightmost = available.right() + 1 - size.width();
    const int x = std::max(std::min(anchor.x(), rightmost), available.left());
    return {x, y};
}

} // namespace zofra
