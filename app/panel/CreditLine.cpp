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
    , m_look(look)
    , m_link(new LinkButton(look, this)) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void CreditLine::setLanguage(AppLanguage language) {
    m_text = texts::credit.in(language);
    setAccessibleName(m_text);
    m_link->setTitle(texts::writeToUs.in(language));
    updateGeometry();
    place();
    update();
}

int CreditLine::textWidth() const {
    return QFontMetrics(m_look.metrics.font(textSize), this).horizontalAdvance(m_text + dot);
}

bool CreditLine::fitsOneLine(int width) const {
    return textWidth() + m_link->sizeHint().width() <= width;
}

QSize CreditLine::minimumSizeHint() const {
    const QSize link = m_link->sizeHint();
    return {std::max(textWidth() + 2 * m_look.metrics.bleed(), link.width()), link.height()};
}

int CreditLine::heightForWidth(int width) const {
    const int line = m_link->sizeHint().height();
    return fitsOneLine(width) ? line : 2 * line - m_look.metrics.bleed();
}

void CreditLine::place() {
    const QSize link = m_link->sizeHint();
    if (fitsOneLine(width()))
        m_link->setGeometry(textWidth(), 0, link.width(), link.height());
    else
        m_link->setGeometry(0, link.height() - m_look.metrics.bleed(), std::min(link.width(), width()),
                            link.height());
}

void CreditLine::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), m_look.theme.window);
    painter.setFont(m_look.metrics.font(textSize));
    painter.setPen(m_look.theme.dim);
    const int bleed = m_look.metrics.bleed();
    paintLine(painter, QRect(bleed, 0, width() - bleed, m_link->sizeHint().height()), Qt::AlignLeft,
              fitsOneLine(width()) ? m_text + dot : m_text);
}

} // namespace zofra
