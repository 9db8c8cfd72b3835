// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelMenu.h"

#include "app/panel/PanelMenuStyle.h"
#include "platform/ForeignText.h"

#include <QAction>
#include <QGuiApplication>

namespace zofra {

PanelMenu::PanelMenu(const PanelLook& look, QWidget* owner)
    : QMenu(owner)
    , m_look(look)
    , m_style(std::make_unique<PanelMenuStyle>(look)) {
    setStyle(m_style.get());
    setToolTipsVisible(true);
    // A click beside the menu closes it and does nothing else; clicking its own button again must not reopen
    // it.
    setAttribute(Qt::WA_NoMouseReplay);
    // Rounded corners need a compositor, which only Wayland promises.
    if (QGuiApplication::platformName() == QLatin1String("wayland"))
        setAttribute(Qt::WA_TranslucentBackground);
}

PanelMenu::~PanelMenu() {
    // The style goes before the base class is done with it.
    setStyle(nullptr);
}

void PanelMenu::setEntries(const QList<PanelMenuEntry>& entries) {
    if (entries == m_entries)
        return;
    const int activeIndex = static_cast<int>(actions().indexOf(activeAction()));
    const PanelMenuEntry active = m_entries.value(activeIndex);
    m_entries = entries;
    clear();
    for (const PanelMenuEntry& entry : entries)
        addEntry(entry);
    // Whoever is on a line stays on it when others come and go around it.
    if (!isVisible() || activeIndex < 0)
        return;
    for (qsizetype i = 0; i < entries.size(); ++i) {
        if (entries[i].text == active.text && entries[i].id == active.id) {
            setActiveAction(actions().at(i));
            break;
        }
    }
}

void PanelMenu::goToCurrent() {
    const auto lines = actions();
    for (QAction* line : lines) {
        if (line->isChecked())
            setActiveAction(line);
    }
}

void PanelMenu::addEntry(const PanelMenuEntry& entry) {
    if (entry.kind == PanelMenuEntry::Kind::separator) {
        addSeparator();
        return;
    }
    QAction* action = addAction(menuText(entry.text));
    if (!entry.help.isEmpty())
        action->setToolTip(toolTipText(entry.help));
    if (entry.kind == PanelMenuEntry::Kind::message) {
        action->setFont(m_look.metrics.font(11));
        action->setEnabled(false);
        return;
    }
    if (entry.mark != PanelMenuEntry::Mark::none) {
        action->setCheckable(true);
        action->setChecked(entry.mark == PanelMenuEntry::Mark::on);
    }
    connect(action, &QAction::triggered, this, [action, entry] {
        // The check mark follows the state, not the click.
        if (action->isCheckable())
            action->setChecked(entry.mark == PanelMenuEntry::Mark::on);
        entry.act();
    });
}

} // namespace zofra
