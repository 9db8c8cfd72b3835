// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>

namespace zofra {

/// Sizes of the panel. Everything is drawn for text of 14 pixels and grows with the desktop's font from
/// there, so that large fonts find room. All lengths are device-independent pixels.
class PanelMetrics {
public:
    PanelMetrics() = default;
    /// `font` is the desktop's; `logicalDpi` and `screenHeight` are those of the screen the panel is on.
    /// Where the font would make the panel taller than the screen, the panel stays as small as it must.
    PanelMetrics(const QFont& font, qreal logicalDpi, int screenHeight);

    /// A length of the drawing, scaled and on whole pixels, at least 1.
    [[nodiscard]] int px(qreal length) const;
    [[nodiscard]] qreal scaled(qreal length) const { return length * m_scale; }
    /// The room between two things, one below the other; closer together on a low screen.
    [[nodiscard]] int gap(qreal length) const { return px(length * m_closeness); }
    /// The desktop's family at `size` (pixels of the drawing) and `weight`.
    [[nodiscard]] QFont font(qreal size, QFont::Weight weight = QFont::Normal) const;

    /// Room that every part keeps around itself for its focus ring.
    [[nodiscard]] int bleed() const { return px(4); }

    friend bool operator==(const PanelMetrics&, const PanelMetrics&) = default;

private:
    QFont m_font;
    qreal m_dpi = 96;
    qreal m_scale = 1;
    qreal m_closeness = 1;
};

} // namespace zofra
