// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/WidgetMenu.h"

#include "platform/ForeignText.h"

#include <QAction>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QIconEngine>
#include <QKeyEvent>
#include <QPaintEngine>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QToolTip>

#include <algorithm>
#include <utility>

namespace zofra {

namespace {

constexpr const char* toolTipProperty = "zofraToolTip";
constexpr int gap = 4;
/// In the toolkit's pixels: with icon, mark and arrow a menu stays below 480.
constexpr int widestText = 400;

/// Draws one symbol in the colours that menus have now, at the size at which it is shown and no other.
class SymbolIconEngine final : public QIconEngine {
public:
    SymbolIconEngine(const IconProvider& icons, QString symbolName, std::shared_ptr<QStyle> style)
        : m_icons(icons)
        , m_symbolName(std::move(symbolName))
        , m_style(std::move(style)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        // The device that is really painted on; its ratio need not be whole.
        const qreal ratio = painter->paintEngine()->paintDevice()->devicePixelRatioF();
        const int pixels = qRound(std::min(rect.width(), rect.height()) * ratio);
        painter->drawImage(QRectF(rect), m_icons.image(m_symbolName, pixels, color(mode)));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        return QPixmap::fromImage(
            m_icons.image(m_symbolName, std::min(size.width(), size.height()), color(mode)));
    }
    [[nodiscard]] QIconEngine* clone() const override { return new SymbolIconEngine(*this); }

private:
    [[nodiscard]] QColor color(QIcon::Mode mode) const {
        const QPalette palette = m_style ? m_style->standardPalette() : QGuiApplication::palette();
        if (mode == QIcon::Disabled)
            return palette.color(QPalette::Disabled, QPalette::WindowText);
        const bool isUnderPointer = mode == QIcon::Active || mode == QIcon::Selected;
        return palette.color(QPalette::Active,
                             isUnderPointer ? QPalette::HighlightedText : QPalette::WindowText);
    }

    const IconProvider& m_icons;
    QString m_symbolName;
    std::shared_ptr<QStyle> m_style;
};

} // namespace

WidgetMenu::WidgetMenu(const Menu& menu, const IconProvider& icons, QWidget* parent)
    : WidgetMenu(menu, icons, icons.menuStyle(), parent) {}

WidgetMenu::WidgetMenu(const Menu& menu, const IconProvider& icons, std::shared_ptr<QStyle> style,
                       QWidget* parent)
    : QMenu(parent)
    , m_style(std::move(style)) {
    if (m_style)
        setStyle(m_style.get());
    // Now, for the style has a say in the font that texts are measured with.
    ensurePolished();
    for (const MenuItem& item : menu)
        addItem(item, icons);
}

WidgetMenu::~WidgetMenu() {
    // The style goes before the base class is done with it.
    if (m_style)
        setStyle(nullptr);
}

void WidgetMenu::addItem(const MenuItem& item, const IconProvider& icons) {
    if (item.isSeparator()) {
        addSeparator();
        return;
    }
    const QString whole = shownLine(item.title, maxShownCharacters * 4);
    const QString shown = fontMetrics().elidedText(shownLine(item.title), Qt::ElideRight, widestText);
    const QString text = widgetMenuText(shown);
    QAction* action = nullptr;
    if (item.submenu.empty()) {
        action = addAction(text);
    } else {
        auto* submenu = new WidgetMenu(item.submenu, icons, m_style, this);
        submenu->setTitle(text);
        action = addMenu(submenu);
    }
    action->setEnabled(item.isEnabled);
    action->setCheckable(item.state != MenuItem::CheckState::none);
    action->setChecked(item.state == MenuItem::CheckState::on);
    if (!item.iconName.isEmpty())
        action->setIcon(QIcon(new SymbolIconEngine(icons, item.iconName, m_style)));
    action->setIconVisibleInMenu(true);
    action->setIconText(item.iconDescription);
    if (!item.keyEquivalent.isEmpty()) {
        action->setShortcut(QKeySequence(QLatin1String("Ctrl+") + item.keyEquivalent.toUpper()));
        action->setShortcutVisibleInContextMenu(true);
    }
    // An elided text is shown whole while the pointer rests on it.
    action->setProperty(toolTipProperty, shown != whole ? whole : item.toolTip);
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

void WidgetMenu::showEvent(QShowEvent* event) {
    QMenu::showEvent(event);
    // Some desktops let menus have the whole screen, the bars of panels included.
    const QRect available = screen()->availableGeometry();
    const QPoint corner(std::min(x(), available.right() + 1 - width()),
                        std::min(y(), available.bottom() + 1 - height()));
    move(std::max(corner.x(), available.left()), std::max(corner.y(), available.top()));
}

bool WidgetMenu::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QMenu::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    const QAction* action = actionAt(help->pos());
    const QString text = action ? action->property(toolTipProperty).toString() : QString();
    QToolTip::showText(help->globalPos(),
                       text.isEmpty() ? QString() : u"<p>%1</p>"_qs.arg(text.toHtmlEscaped()), this);
    return true;
}

void WidgetMenu::keyPressEvent(QKeyEvent* event) {
    // Menus know their items' letters, but not their shortcuts; those of the whole tree hold in each of them.
    const QKeySequence pressed(event->keyCombination());
    for (QMenu* menu = this; menu; menu = qobject_cast<QMenu*>(menu->parentWidget())) {
        for (QAction* action : menu->actions()) {
            if (action->isEnabled() && !action->shortcut().isEmpty() && action->shortcut() == pressed) {
                menu->close();
                action->trigger();
                return;
            }
        }
    }
    const QPointer<QAction> line = activeAction();
    QMenu::keyPressEvent(event);
    if (line && line->menu() && line->menu()->isVisible())
        goToChosen(*line->menu());
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
