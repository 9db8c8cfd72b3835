// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"

namespace zofra {

/// A quiet button with a title.
class TextButton final : public PanelButton {
public:
    TextButton(const PanelLook& look, QWidget* parent)
        : PanelButton(look, Style(), parent) {}

protected:
    [[nodiscard]] QSize bodySize() const override {
        const PanelMetrics& metrics = look().metrics;
        return {titleWidth() + 2 * metrics.px(14), titleHeight() + 2 * metrics.px(7)};
    }
    void paintBody(QPainter& painter, const QRect& body) override {
        const bool isTouched = isDown() || underMouse();
        fillRounded(painter, body, radius(), isTouched ? look().theme.pressed : look().theme.hover);
        paintTitle(painter, body, Qt::AlignHCenter, look().theme.text);
    }
};

/// A few words that lead somewhere, in the accent colour.
class LinkButton final : public PanelButton {
public:
    LinkButton(const PanelLook& look, QWidget* parent)
        : PanelButton(look, {.radius = 2, .textSize = 12, .weight = QFont::Normal}, parent) {
        setCursor(Qt::PointingHandCursor);
    }

protected:
    [[nodiscard]] QSize bodySize() const override { return {titleWidth(), titleHeight()}; }
    void paintBody(QPainter& painter, const QRect& body) override {
        paintTitle(painter, body, Qt::AlignLeft, look().theme.accentText);
    }
    [[nodiscard]] QFont textFont() const override {
        QFont font = PanelButton::textFont();
        font.setUnderline(underMouse() || look().theme.isHighContrast);
        return font;
    }
    /// Close by, for words stand before it.
    [[nodiscard]] int ringReach() const override { return look().metrics.px(3); }
};

} // namespace zofra
