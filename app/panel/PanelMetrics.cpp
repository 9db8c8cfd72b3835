// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelMetrics.h"

#include <algorithm>
#include <cmath>

namespace zofra {

namespace {

constexpr qreal drawnTextPixels = 14;
// The panel at its tallest, with a window's frame.
constexpr qreal drawnHeight = 560;
// Rows that are 14 pixels apart are 8 apart where the screen is lower than that.
constexpr qreal closest = 8.0 / 14;
// Below the drawing's own size the small print would no longer be legible.
constexpr qreal smallestScale = 1;

} // namespace

PanelMetrics::PanelMetrics(const QFont& font, qreal logicalDpi, int screenHeight)
    : m_font(font)
    , m_dpi(logicalDpi > 0 ? logicalDpi : 96) {
    const qreal pixels = font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * m_dpi / 72;
    m_scale = std::max(std::min(pixels / drawnTextPixels, screenHeight / drawnHeight), smallestScale);
    m_closeness = screenHeight > 0 && screenHeight < drawnHeight ? closest : 1;
}

int PanelMetrics::px(qreal length) const {
    return std::max(1, static_cast<int>(std::lround(length * m_scale)));
}

QFont PanelMetrics::font(qreal size, QFont::Weight weight) const {
    QFont font = m_font;
    font.setPointSizeF(size * m_scale * 72 / m_dpi);
    font.setWeight(weight);
    font.setItalic(false);
    return font;
}

} // namespace zofra
