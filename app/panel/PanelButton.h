// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QPushButton>

namespace zofra {

/// What the panel's buttons have in common: a body with room around it for the focus ring, painted by
/// themselves. The mouse does not move the focus here, so that Return goes on meaning "close" while someone
/// clicks around; with the keyboard on a button, Space and Return press it.
class PanelButton : public QPushButton {
public:
    PanelButton(const PanelLook& look, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const final;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    /// Without the room for the ring.
    [[nodiscard]] virtual QSize bodySize() const = 0;
    virtual void paintBody(QPainter& painter, const QRect& body) = 0;
    /// How round the body, and with it the ring, is.
    [[nodiscard]] virtual qreal radius() const = 0;
    /// How far the ring's outer edge stands off the body; at most the room that is kept for it.
    [[nodiscard]] virtual int ringReach() const { return m_look.metrics.bleed(); }
    /// A ring that is there without the focus; transparent for none.
    [[nodiscard]] virtual QColor restingRing() const { return Qt::transparent; }

    [[nodiscard]] const PanelLook& look() const { return m_look; }
    [[nodiscard]] QRect bodyRect() const;

    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) final;

private:
    const PanelLook& m_look;
};

} // namespace zofra
