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
    QString text;
    Mark mark = Mark::none;
    /// What choosing the line does.
    std::function<void()> act = {};
    /// Tells lines of the same text apart.
    QString id = {};
    QString help = {};

    /// Whether both look the same and do the same.
    friend bool operator==(const PanelMenuEntry& a, const PanelMenuEntry& b) {
        return a.kind == b.kind && a.text == b.text && a.mark == b.mark && a.id == b.id && a.help == b.help;
    }
};

/// A menu in the panel's look that belongs to one of its buttons. Can change while it is open.
class PanelMenu final : public QMenu {
public:
    PanelMenu(const PanelLook& look, QWidget* owner);
    ~PanelMenu() override;

    /// Shows these lines; equal ones are left alone.
    void setEntries(const QList<PanelMenuEntry>& entries);
    [[nodiscard]] const QList<PanelMenuEntry>& entries() const { return m_entries; }
    /// Goes to the line of what is chosen now.
    void goToCurrent();

private:
    void addEntry(const PanelMenuEntry& entry);

    const PanelLook& m_look;
    std::unique_ptr<QStyle> m_style;
    QList<PanelMenuEntry> m_entries;
};

} // namespace zofra
