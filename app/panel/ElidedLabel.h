// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QLabel>

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

    ElidedLabel(const PanelLook& look, const Style& style, QWidget* parent);

    void setContent(const QString& text);
    [[nodiscard]] const QString& content() const { return m_text; }
    [[nodiscard]] const Style& drawnAs() const { return m_style; }
    /// Whether the text is cut at the present width.
    [[nodiscard]] bool isElided() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    [[nodiscard]] QFont textFont() const;
    [[nodiscard]] QMargins margins() const;
    [[nodiscard]] QRect textRect() const;

    const PanelLook& m_look;
    Style m_style;
    QString m_text;
};

} // namespace zofra
