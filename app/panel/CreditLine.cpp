// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/CreditLine.h"

#include "stations/texts/InterfaceTexts.h"

#include <QFontMetrics>
#include <QPaintEvent>

#include <algorithm>

namespace zofra {

namespace {

constexpr qreal textSize = 12;
const QString dot = QStringLiteral(" · ");

} // namespace

CreditLine::CreditLine(const PanelLook& look, QWidget* parent)
    : QWidget(parent)
    , m_look(look) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    ElidedLabel::Style style;
    style.size = textSize;
    style.ink = ElidedLabel::Ink::dim;
    m_text = new ElidedLabel(look, style, this);
    m_link = new LinkButton(look, this);
    connect(m_link, &QPushButton::clicked, this, [this] {
        if (onLink)
            onLink();
    });
}

void CreditLine::setLanguage(AppLanguage language) {
    m_text->setContent(texts::credit.in(language));
    m_link->setTitle(texts::writeToUs.in(language));
    updateGeometry();
    place();
    update();
}

int CreditLine::dotWidth() const {
    return QFontMetrics(m_look.metrics.font(textSize), this).horizontalAdvance(dot);
}

bool CreditLine::fitsOneLine(int width) const {
    const int overlap = 2 * m_look.metrics.bleed();
    return m_text->sizeHint().width() + dotWidth() + m_link->sizeHint().width() - overlap <= width;
}

QSize CreditLine::minimumSizeHint() const {
    const int height = m_text->sizeHint().height();
    return {std::max(m_text->sizeHint().width(), m_link->sizeHint().width()), height};
}

int CreditLine::heightForWidth(int width) const {
    const int line = std::max(m_text->sizeHint().height(), m_link->sizeHint().height());
    return fitsOneLine(width) ? line : 2 * line - m_look.metrics.bleed();
}

void CreditLine::place() {
    const int bleed = m_look.metrics.bleed();
    const QSize text = m_text->sizeHint();
    const QSize link = m_link->sizeHint();
    m_text->setGeometry(0, 0, std::min(text.width(), width()), text.height());
    if (fitsOneLine(width()))
        m_link->setGeometry(text.width() - 2 * bleed + dotWidth(), 0, link.width(), link.height());
    else
        m_link->setGeometry(0, text.height() - bleed, std::min(link.width(), width()), link.height());
}

void CreditLine::resizeEvent(QResizeEvent*) {
    place();
}

void CreditLine::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), m_look.theme.window);
    if (!fitsOneLine(width()))
        return;
    painter.setFont(m_look.metrics.font(textSize));
    painter.setPen(m_look.theme.dim);
    const int bleed = m_look.metrics.bleed();
    const QRect room(m_text->geometry().right() + 1 - bleed, bleed, dotWidth(), m_text->height() - 2 * bleed);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, dot);
}

} // namespace zofra
