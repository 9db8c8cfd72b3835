// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/TextButton.h"
#include "stations/AppLanguage.h"
#include "stations/texts/InterfaceTexts.h"

#include <QFontMetrics>
#include <QPaintEvent>
#include <QWidget>

#include <algorithm>

namespace zofra {

/// Who made this, and a link to write to them, which goes to a line of its own where one is too short.
class CreditLine final : public QWidget {
public:
    CreditLine(const PanelLook& look, QWidget* parent)
        : QWidget(parent)
        , m_look(look)
        , m_link(new LinkButton(look, this)) {
        setAttribute(Qt::WA_OpaquePaintEvent);
        QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
    }

    void setLanguage(AppLanguage language) {
        m_text = texts::credit.in(language);
        setAccessibleName(m_text);
        m_link->setTitle(texts::writeToUs.in(language));
        updateGeometry();
        place();
        update();
    }
    [[nodiscard]] LinkButton* link() const { return m_link; }

    [[nodiscard]] QSize sizeHint() const override {
        return {minimumSizeHint().width(), heightForWidth(width())};
    }
    [[nodiscard]] QSize minimumSizeHint() const override {
        const QSize link = m_link->sizeHint();
        return {std::max(textWidth() + 2 * m_look.metrics.bleed(), link.width()), link.height()};
    }
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override {
        const int line = m_link->sizeHint().height();
        return fitsOneLine(width) ? line : 2 * line - m_look.metrics.bleed();
    }

protected:
    void resizeEvent(QResizeEvent*) override { place(); }
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        painter.fillRect(event->rect(), m_look.theme.window);
        painter.setFont(m_look.metrics.font(textSize));
        painter.setPen(m_look.theme.dim);
        const int bleed = m_look.metrics.bleed();
        paintLine(painter, QRect(bleed, 0, width() - bleed, m_link->sizeHint().height()), Qt::AlignLeft,
                  fitsOneLine(width()) ? m_text + dot : m_text);
    }

private:
    static constexpr qreal textSize = 12;
    static inline const QString dot = u" · "_qs;

    /// The text's own, without the room for rings.
    [[nodiscard]] int textWidth() const {
        return QFontMetrics(m_look.metrics.font(textSize), this).horizontalAdvance(m_text + dot);
    }
    [[nodiscard]] bool fitsOneLine(int width) const {
        return textWidth() + m_link->sizeHint().width() <= width;
    }
    void place() {
        const QSize link = m_link->sizeHint();
        if (fitsOneLine(width()))
            m_link->setGeometry(textWidth(), 0, link.width(), link.height());
        else
            m_link->setGeometry(0, link.height() - m_look.metrics.bleed(), std::min(link.width(), width()),
                                link.height());
    }

    const PanelLook& m_look;
    QString m_text;
    LinkButton* m_link;
};

} // namespace zofra
