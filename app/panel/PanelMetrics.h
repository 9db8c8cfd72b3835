// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QMargins>

#include <algorithm>
#include <cmath>

namespace zofra {

/// Sizes of the panel. Everything is drawn for text of 14 pixels and grows with the desktop's font from
/// there, so that large fonts find room. All lengths are device-independent pixels.
class PanelMetrics {
public:
    PanelMetrics() = default;
    /// `font` is the desktop's; `logicalDpi` and `screenHeight` are those of the screen the panel is on.
    /// Where the font would make the panel taller than the screen, the panel stays as small as it must.
    PanelMetrics(const QFont& font, qreal logicalDpi, int screenHeight)
        : m_font(font)
        , m_dpi(logicalDpi > 0 ? logicalDpi : 96) {
        constexpr qreal drawnTextPixels = 14;
        // The panel at its tallest, with a window's frame.
        constexpr qreal drawnHeight = 560;
        const qreal pixels = font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * m_dpi / 72;
        // Below the drawing's own size the small print would no longer be legible.
        m_scale = std::max(std::min(pixels / drawnTextPixels, screenHeight / drawnHeight), 1.0);
        // Rows that are 14 pixels apart are 8 apart where the screen is lower than that.
        m_closeness = screenHeight > 0 && screenHeight < drawnHeight ? 8.0 / 14 : 1;
    }

    /// A length of the drawing, scaled and on whole pixels, at least 1.
    [[nodiscard]] int px(qreal length) const {
        return std::max(1, static_cast<int>(std::lround(length * m_scale)));
    }
    [[nodiscard]] qreal scaled(qreal length) const { return length * m_scale; }
    /// The room between two things, one below the other; closer together on a low screen.
    [[nodiscard]] int gap(qreal length) const { return px(length * m_closeness); }
    /// The desktop's family at `size` (pixels of the drawing) and `weight`.
    [[nodiscard]] QFont font(qreal size, QFont::Weight weight = QFont::Normal) const {
        QFont font = m_font;
        font.setPointSizeF(size * m_scale * 72 / m_dpi);
        font.setWeight(weight);
        font.setItalic(false);
        return font;
    }

    /// Room that every part keeps around itself for its focus ring.
    [[nodiscard]] int bleed() const { return px(4); }
    [[nodiscard]] QMargins bleeds() const { return QMargins(1, 1, 1, 1) * bleed(); }

    friend bool operator==(const PanelMetrics&, const PanelMetrics&) = default;

private:
    QFont m_font;
    qreal m_dpi = 96;
    qreal m_scale = 1;
    qreal m_closeness = 1;
};

} // namespace zofra
