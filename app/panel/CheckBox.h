// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"

#include <algorithm>

namespace zofra {

/// A box that is on or off, and a title that is part of it.
class CheckBox final : public PanelButton {
public:
    CheckBox(const PanelLook& look, QWidget* parent)
        : PanelButton(look, {.radius = 5, .weight = QFont::Normal}, parent) {
        setCheckable(true);
        // Return goes on to the panel, Space turns the box.
        setAutoDefault(false);
    }

protected:
    [[nodiscard]] QSize bodySize() const override {
        return {look().metrics.px(boxSize) + look().metrics.px(gap) + titleWidth(),
                std::max(QFontMetrics(textFont(), this).height(), look().metrics.px(boxSize))};
    }
    [[nodiscard]] QRect ringed() const override {
        const int edge = look().metrics.px(boxSize);
        return {bodyRect().left(), (height() - edge) / 2, edge, edge};
    }
    void paintBody(QPainter& painter, const QRect& body) override {
        const PanelTheme& theme = look().theme;
        const PanelMetrics& metrics = look().metrics;
        const QRect box = ringed();
        if (isChecked()) {
            fillRounded(painter, box, radius(), theme.accent);
            // A pale accent would not be seen on the window.
            strokeRounded(painter, box, radius(), theme.accentText, metrics.scaled(1.5));
            const int edge = metrics.px(13);
            const int inset = (box.width() - edge) / 2;
            paintIcon(painter, u"checkmark"_qs,
                      QRect(box.topLeft() + QPoint(inset, inset), QSize(edge, edge)), theme.onAccent);
        } else {
            fillRounded(painter, box, radius(), underMouse() || isDown() ? theme.hover : theme.card);
            strokeRounded(painter, box, radius(), theme.mark, metrics.scaled(1.5));
        }
        paintTitle(painter, body.adjusted(box.width() + metrics.px(gap), 0, 0, 0), Qt::AlignLeft, theme.text);
    }

private:
    static constexpr qreal boxSize = 18;
    static constexpr qreal gap = 9;
};

} // namespace zofra
