// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

class QAction;
class QKeyEvent;
class QMenu;

namespace zofra {

/// Goes to a line of a menu by the letters that it begins with: letters within a second are one beginning,
/// the same letter again goes on to the next line. An event filter of menus; main thread only.
class MenuKeys final : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] bool typed(QMenu& menu, const QKeyEvent& event);
    [[nodiscard]] QAction* lineFor(const QMenu& menu) const;

    QString m_typed;
    /// In which menu, only to compare with.
    const QMenu* m_menu = nullptr;
    quint64 m_typedAt = 0;
};

} // namespace zofra
