// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelAccess.h"

#include "app/panel/AboutPopupView.h"
#include "app/panel/Card.h"
#include "app/panel/CreditLine.h"
#include "app/panel/IconLabel.h"
#include "app/panel/MenuButton.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace zofra {

namespace {

/// Something with parts, of which only those that say something are told.
class PartsAccess final : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    int childCount() const override { return static_cast<int>(parts().size()); }
    QAccessibleInterface* child(int index) const override {
        return QAccessible::queryAccessibleInterface(parts().value(index));
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return child ? static_cast<int>(parts().indexOf(qobject_cast<QWidget*>(child->object()))) : -1;
    }

private:
    QWidgetList parts() const {
        QWidgetList found;
        const auto all = widget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (QWidget* part : all) {
            if (!part->isWindow() && !dynamic_cast<IconLabel*>(part) && !dynamic_cast<Separator*>(part))
                found << part;
        }
        return found;
    }
};

/// A button that says that it opens a menu, and whether it is open.
class MenuButtonAccess final : public QAccessibleWidget {
public:
    explicit MenuButtonAccess(MenuButton* button)
        : QAccessibleWidget(button, QAccessible::ButtonMenu)
        , m_button(*button) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.hasPopup = true;
        state.expandable = true;
        state.expanded = m_button.isOpen();
        state.collapsed = !m_button.isOpen();
        return state;
    }
    QStringList actionNames() const override {
        return QStringList{showMenuAction()} + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name == showMenuAction())
            m_button.openMenu();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    MenuButton& m_button;
};

QAccessibleInterface* access(const QString&, QObject* object) {
    if (auto* panel = dynamic_cast<AboutPopupView*>(object))
        return new PartsAccess(panel, QAccessible::Window);
    if (auto* card = dynamic_cast<Card*>(object))
        return new PartsAccess(card, QAccessible::Grouping);
    if (auto* credit = dynamic_cast<CreditLine*>(object))
        return new PartsAccess(credit, QAccessible::StaticText);
    if (auto* button = dynamic_cast<MenuButton*>(object))
        return new MenuButtonAccess(button);
    return nullptr;
}

} // namespace

void installPanelAccess() {
    QAccessible::installFactory(access); // once, however often it is said
}

} // namespace zofra
