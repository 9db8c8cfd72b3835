// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QPaintEvent>

#include <utility>

namespace zofra {

/// A drawing that is only looked at; what it means is said by the text beside it.
class IconLabel final : public QWidget {
public:
    enum class Ink { dim, accent };

    struct Style {
        /// Edge of the drawing, and width and height of the cell it stands in.
        qreal size = 18;
        qreal cellWidth = 20;
        qreal cellHeight = 18;
        /// Where in the cell the drawing stands; always in the middle from top to bottom.
        Qt::Alignment alignment = Qt::AlignHCenter;
        Ink ink = Ink::dim;
        Backdrop backdrop = Backdrop::window;
        /// Room around the cell, in multiples of what buttons keep for their ring.
        int bleeds = 1;
    };

    IconLabel(const PanelLook& look, QString name, const Style& style, QWidget* parent)
        : QWidget(parent)
        , m_look(look)
        , m_name(std::move(name))
        , m_style(style) {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }

    void setInk(Ink ink) {
        if (std::exchange(m_style.ink, ink) != ink)
            update();
    }
    [[nodiscard]] const QString& name() const { return m_name; }
    [[nodiscard]] Ink ink() const { return m_style.ink; }
    [[nodiscard]] const Style& drawnAs() const { return m_style; }
    [[nodiscard]] QSize sizeHint() const override {
        const PanelMetrics& metrics = m_look.metrics;
        return QSize(metrics.px(m_style.cellWidth), metrics.px(m_style.cellHeight))
            .grownBy(metrics.bleeds() * m_style.bleeds);
    }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        painter.fillRect(event->rect(), backdropColor(m_look.theme, m_style.backdrop));
        const int edge = m_look.metrics.px(m_style.size);
        const int bleed = m_style.bleeds * m_look.metrics.bleed();
        const int spare = width() - 2 * bleed - edge;
        const int left = m_style.alignment.testFlag(Qt::AlignLeft)    ? 0
                         : m_style.alignment.testFlag(Qt::AlignRight) ? spare
                                                                      : spare / 2;
        paintIcon(painter, m_name, QRect(bleed + left, (height() - edge) / 2, edge, edge),
                  m_style.ink == Ink::accent ? m_look.theme.accentText : m_look.theme.dim);
    }

private:
    const PanelLook& m_look;
    QString m_name;
    Style m_style;
};

} // namespace zofra
