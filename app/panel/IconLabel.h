// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QWidget>

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

    IconLabel(const PanelLook& look, QString name, const Style& style, QWidget* parent);

    void setInk(Ink ink);
    [[nodiscard]] const QString& name() const { return m_name; }
    [[nodiscard]] Ink ink() const { return m_style.ink; }
    [[nodiscard]] const Style& drawnAs() const { return m_style; }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const PanelLook& m_look;
    QString m_name;
    Style m_style;
};

} // namespace zofra
