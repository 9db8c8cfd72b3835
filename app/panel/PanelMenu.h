// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QList>
#include <QMenu>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// One line of a panel menu. `text` is shown as it is, whatever it contains.
struct PanelMenuEntry {
    enum class Kind {
        choice,
        /// Said, not chosen; in small print.
        message,
        separator,
    };
    /// Whether a choice is one of several, of which the current one carries the drawing "checkmark".
    enum class Mark { none, off, on };

    Kind kind = Kind::choice;
    /// What choosing this line hands out.
    int command = 0;
    QString argument;
    QString text;
    QString help;
    Mark mark = Mark::none;

    friend bool operator==(const PanelMenuEntry&, const PanelMenuEntry&) = default;
};

/// A menu in the panel's look that belongs to one of its buttons. Can change while it is open.
class PanelMenu final : public QMenu {
public:
    PanelMenu(const PanelLook& look, QWidget* owner);
    ~PanelMenu() override;

    /// Shows these lines; equal ones are left alone.
    void setEntries(const QList<PanelMenuEntry>& entries);
    [[nodiscard]] const QList<PanelMenuEntry>& entries() const { return m_entries; }

    /// The user has chosen a line.
    std::function<void(const PanelMenuEntry&)> onChosen;

private:
    void addEntry(const PanelMenuEntry& entry);

    const PanelLook& m_look;
    std::unique_ptr<QStyle> m_style;
    QList<PanelMenuEntry> m_entries;
};

} // namespace zofra
