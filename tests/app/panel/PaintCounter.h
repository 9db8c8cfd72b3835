// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QEvent>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <QWidget>

#include <typeinfo>

namespace zofra::test {

/// Counts the paint events of every widget of the program while it lives.
class PaintCounter final : public QObject {
public:
    PaintCounter() { qApp->installEventFilter(this); }

    [[nodiscard]] int of(const QWidget* widget) const { return m_paints.value(widget); }
    [[nodiscard]] int all() const {
        int sum = 0;
        for (const int count : m_paints)
            sum += count;
        return sum;
    }
    /// The classes painted, for a failing test's message.
    [[nodiscard]] QString names() const {
        QStringList names;
        for (auto paint = m_paints.cbegin(); paint != m_paints.cend(); ++paint) {
            const QWidget& widget = *paint.key();
            names << QStringLiteral("%1 %2 x%3")
                         .arg(QLatin1String(typeid(widget).name()), widget.accessibleName())
                         .arg(paint.value());
        }
        return names.join(QLatin1String(", "));
    }
    void forget() { m_paints.clear(); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && watched->isWidgetType())
            ++m_paints[static_cast<QWidget*>(watched)];
        return false;
    }

private:
    QMap<const QWidget*, int> m_paints;
};

} // namespace zofra::test
