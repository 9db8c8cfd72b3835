// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QPaintEvent>

namespace zofra {

/// A rounded surface with a fine border that groups what stands on it.
class Card : public QWidget {
public:
    Card(const PanelLook& look, QWidget* parent)
        : QWidget(parent)
        , m_look(look) {
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    [[nodiscard]] const PanelLook& look() const { return m_look; }
    void paintEvent(QPaintEvent* event) final {
        QPainter painter(this);
        painter.fillRect(event->rect(), m_look.theme.window);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRect body = rect() - m_look.metrics.bleeds();
        const qreal radius = m_look.metrics.scaled(10);
        fillRounded(painter, body, radius, m_look.theme.card);
        strokeRounded(painter, body, radius, m_look.theme.line, 1);
    }

private:
    const PanelLook& m_look;
};

/// A fine line across.
class Separator final : public QWidget {
public:
    Separator(const PanelLook& look, QWidget* parent)
        : QWidget(parent)
        , m_look(look) {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

    [[nodiscard]] QSize sizeHint() const override { return QSize(1, 1).grownBy(m_look.metrics.bleeds()); }

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        painter.fillRect(event->rect(), m_look.theme.window);
        painter.fillRect(rect() - m_look.metrics.bleeds(), m_look.theme.line);
    }

private:
    const PanelLook& m_look;
};

} // namespace zofra
