// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelMenuStyle.h"
#include "platform/ForeignText.h"
#include "platform/MenuItem.h"

#include <QAction>
#include <QMenu>

#include <algorithm>
#include <utility>

namespace zofra {

/// A menu in the panel's look that belongs to one of its buttons. Can change while it is open. What is not
/// enabled is said, in small print; of what can be checked, the current item carries the drawing "checkmark".
class PanelMenu final : public QMenu {
public:
    PanelMenu(const PanelLook& look, QWidget* owner)
        : QMenu(owner)
        , m_look(look)
        , m_style(look) {
        setStyle(&m_style);
        // Now, for the style has a say in the font that texts are measured with.
        ensurePolished();
        setToolTipsVisible(true);
        // A click beside the menu closes it and does nothing else; on its own button it must not reopen it.
        setAttribute(Qt::WA_NoMouseReplay);
    }
    ~PanelMenu() override {
        // The style goes before the base class is done with it.
        setStyle(nullptr);
    }

    /// Shows these items; a menu that looks the same is left alone.
    void setEntries(const Menu& entries) {
        if (std::equal(entries.begin(), entries.end(), m_entries.begin(), m_entries.end(), looksSame))
            return;
        const qsizetype activeIndex = actions().indexOf(activeAction());
        const Menu before = std::exchange(m_entries, entries);
        clear();
        for (const MenuItem& entry : entries)
            addEntry(entry);
        // Whoever is on a line stays on it when others come and go around it.
        if (!isVisible() || activeIndex < 0)
            return;
        const MenuItem& active = before.at(static_cast<std::size_t>(activeIndex));
        const auto same = std::find_if(entries.begin(), entries.end(), [&active](const MenuItem& entry) {
            return entry.title == active.title && entry.identity == active.identity;
        });
        if (same != entries.end())
            setActiveAction(actions().at(same - entries.begin()));
    }

private:
    /// With mark and margins a menu stays below 480.
    static constexpr qreal widestText = 400;

    static bool looksSame(const MenuItem& a, const MenuItem& b) {
        return a.kind == b.kind && a.title == b.title && a.isEnabled == b.isEnabled && a.state == b.state &&
               a.identity == b.identity && a.toolTip == b.toolTip;
    }

    void addEntry(const MenuItem& entry) {
        if (entry.isSeparator()) {
            addSeparator();
            return;
        }
        const QString whole = displayText(entry.title);
        // What cannot be chosen is a sentence of ours.
        const QString shown =
            entry.isEnabled ? fontMetrics().elidedText(whole, Qt::ElideRight, m_look.metrics.px(widestText))
                            : whole;
        QAction* action = addAction(menuText(shown));
        const QString toolTip = shown != whole ? whole : entry.toolTip;
        if (!toolTip.isEmpty())
            action->setToolTip(toolTipText(toolTip));
        if (!entry.isEnabled) {
            action->setFont(m_look.metrics.font(11));
            action->setEnabled(false);
            return;
        }
        const bool isOn = entry.state == MenuItem::CheckState::on;
        action->setCheckable(entry.state != MenuItem::CheckState::none);
        action->setChecked(isOn);
        connect(action, &QAction::triggered, this, [action, entry, isOn] {
            // The check mark follows the state, not the click.
            action->setChecked(isOn);
            entry.action(entry);
        });
    }

    const PanelLook& m_look;
    PanelMenuStyle m_style;
    Menu m_entries;
};

} // namespace zofra
