// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"
#include "platform/ForeignText.h"

#include <QFontMetrics>
#include <QHelpEvent>
#include <QLabel>
#include <QPaintEvent>
#include <QToolTip>

#include <algorithm>

namespace zofra {

/// One line of text that is cut with an ellipsis where there is no room; the whole of it then appears on
/// hover. What it shows is data: never markup, never a mnemonic. Setting an equal text repaints nothing.
class ElidedLabel final : public QLabel {
public:
    enum class Ink { text, dim };
    /// Whether the label gives way when there is little room, or insists on its whole text.
    enum class Room { givesWay, insists };
    /// Whether it keeps the room around itself that buttons need for their ring, to stand in a row with them.
    enum class Bleed { none, likeButtons };

    struct Style {
        qreal size = 14;
        QFont::Weight weight = QFont::Normal;
        Ink ink = Ink::text;
        Room room = Room::givesWay;
        Bleed bleed = Bleed::likeButtons;
        Backdrop backdrop = Backdrop::window;
        Qt::Alignment alignment = Qt::AlignLeft;
        /// Added between letters, as a share of the size.
        qreal letterSpacing = 0;
    };

    ElidedLabel(const PanelLook& look, const Style& style, QWidget* parent)
        : QLabel(parent)
        , m_look(look)
        , m_style(style) {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setSizePolicy(style.room == Room::insists ? QSizePolicy::Fixed : QSizePolicy::Expanding,
                      QSizePolicy::Fixed);
    }

    void setContent(const QString& text) {
        const QString shown = displayText(text);
        if (shown == m_text)
            return;
        m_text = shown;
        setAccessibleName(m_text);
        if (m_style.room == Room::insists)
            updateGeometry();
        update();
    }
    [[nodiscard]] const QString& content() const { return m_text; }
    [[nodiscard]] const Style& drawnAs() const { return m_style; }
    /// Whether the text is cut at the present width.
    [[nodiscard]] bool isElided() const {
        return QFontMetrics(textFont(), this).horizontalAdvance(m_text) > textRect().width();
    }

    [[nodiscard]] QSize sizeHint() const override {
        const QFontMetrics metrics(textFont(), this);
        const int line = std::max(metrics.height(), m_look.metrics.px(m_style.size * 1.35));
        return QSize(metrics.horizontalAdvance(m_text) + 1, line).grownBy(margins());
    }
    [[nodiscard]] QSize minimumSizeHint() const override {
        QSize size = sizeHint();
        if (m_style.room == Room::givesWay)
            size.setWidth(std::min(size.width(), m_look.metrics.px(24)));
        return size;
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        painter.fillRect(event->rect(), backdropColor(m_look.theme, m_style.backdrop));
        painter.setFont(textFont());
        painter.setPen(m_style.ink == Ink::dim ? m_look.theme.dim : m_look.theme.text);
        paintLine(painter, textRect(), m_style.alignment, m_text);
    }
    bool event(QEvent* event) override {
        if (event->type() != QEvent::ToolTip)
            return QLabel::event(event);
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                           isElided() ? toolTipText(m_text) : QString(), this, rect());
        return true;
    }

private:
    [[nodiscard]] QFont textFont() const {
        QFont font = m_look.metrics.font(m_style.size, m_style.weight);
        if (m_style.letterSpacing > 0)
            font.setLetterSpacing(QFont::PercentageSpacing, 100 + 100 * m_style.letterSpacing);
        return font;
    }
    [[nodiscard]] QMargins margins() const {
        return m_style.bleed == Bleed::likeButtons ? m_look.metrics.bleeds() : QMargins();
    }
    [[nodiscard]] QRect textRect() const { return rect() - margins(); }

    const PanelLook& m_look;
    Style m_style;
    QString m_text;
};

} // namespace zofra
