// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeyEvent>
#include <QMenu>
#include <QObject>
#include <QString>

#include <algorithm>

namespace zofra {

/// Goes to a line of a menu by the letters that it begins with: letters within a second are one beginning,
/// the same letter again goes on to the next line. An event filter of menus; main thread only.
class MenuKeys final : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto* menu = qobject_cast<QMenu*>(watched);
        if (menu && event->type() == QEvent::KeyPress && typed(*menu, *static_cast<QKeyEvent*>(event)))
            return true;
        return QObject::eventFilter(watched, event);
    }

private:
    static constexpr quint64 oneBeginningMilliseconds = 1000;

    /// From the first letter or digit on: what stands before it nobody types.
    [[nodiscard]] static QString beginningOf(const QAction& line) {
        const QString text = line.text();
        const auto first = std::ranges::find_if(text, [](QChar c) { return c.isLetterOrNumber(); });
        return text.mid(first - text.begin());
    }
    [[nodiscard]] bool typed(QMenu& menu, const QKeyEvent& event) {
        const bool isPlain = (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == 0;
        const QString letters = event.text();
        if (!isPlain || letters.isEmpty() || !letters.front().isPrint())
            return false;
        const bool goesOn =
            &menu == m_menu && !m_typed.isEmpty() && event.timestamp() - m_typedAt < oneBeginningMilliseconds;
        // A blank chooses the line, unless it stands within a name.
        if (letters.front().isSpace() && !goesOn)
            return false;
        m_typed = goesOn ? m_typed + letters : letters;
        m_typedAt = event.timestamp();
        m_menu = &menu;
        if (QAction* line = lineFor(menu))
            menu.setActiveAction(line);
        return true;
    }
    [[nodiscard]] QAction* lineFor(const QMenu& menu) const {
        const QList<QAction*> lines = menu.actions();
        const bool isOneLetter = m_typed.count(m_typed.front(), Qt::CaseInsensitive) == m_typed.size();
        const QString beginning = isOneLetter ? m_typed.left(1) : m_typed;
        const qsizetype current = lines.indexOf(menu.activeAction());
        for (qsizetype i = 0; i < lines.size(); ++i) {
            // One letter goes on from the line after the current one, a longer beginning may stay on it.
            QAction* line = lines.at((std::max<qsizetype>(current, 0) + i + (isOneLetter && current >= 0)) %
                                     lines.size());
            if (!line->isSeparator() && beginningOf(*line).startsWith(beginning, Qt::CaseInsensitive))
                return line;
        }
        return nullptr;
    }

    QString m_typed;
    /// In which menu, only to compare with.
    const QMenu* m_menu = nullptr;
    quint64 m_typedAt = 0;
};

} // namespace zofra
