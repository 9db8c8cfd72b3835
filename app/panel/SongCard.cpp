// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/SongCard.h"

#include "stations/texts/InterfaceTexts.h"

#include <QGridLayout>

namespace zofra {

namespace {

constexpr qreal padding = 13;
constexpr qreal rowGap = 10;
constexpr qreal iconColumn = 20;
constexpr qreal iconGap = 10;
/// Rows of the grid: a header and a song, the gap, a header and a song.
constexpr int nowRow = 0;
constexpr int gapRow = 2;
constexpr int nextRow = 3;

} // namespace

SongCard::SongCard(const PanelLook& look, QWidget* parent)
    : Card(look, parent)
    , m_grid(new QGridLayout(this)) {
    const PanelMetrics& metrics = look.metrics;
    const int side = metrics.bleed() + metrics.px(padding);
    const int margin = metrics.bleed() + metrics.gap(padding);
    m_grid->setContentsMargins(side, margin, side, margin);
    m_grid->setHorizontalSpacing(metrics.px(iconGap));
    m_grid->setVerticalSpacing(metrics.px(1));
    m_grid->setColumnStretch(1, 1);
    m_now = addRow(nowRow, QStringLiteral("music.note"), QFont::DemiBold);
    m_next = addRow(nextRow, QStringLiteral("forward.end.fill"), QFont::Normal);
    showNext(false);
}

ElidedLabel* SongCard::addLabel(int row, ElidedLabel::Style style) {
    style.bleed = ElidedLabel::Bleed::none;
    style.backdrop = Backdrop::card;
    auto* label = new ElidedLabel(look(), style, this);
    m_grid->addWidget(label, row, 1);
    return label;
}

SongCard::Row SongCard::addRow(int row, const QString& icon, QFont::Weight weight) {
    IconLabel::Style iconStyle;
    iconStyle.cellWidth = iconColumn;
    iconStyle.cellHeight = 20;
    iconStyle.alignment = Qt::AlignLeft;
    iconStyle.backdrop = Backdrop::card;
    iconStyle.bleeds = 0;
    auto* drawing = new IconLabel(look(), icon, iconStyle, this);
    m_grid->addWidget(drawing, row, 0, 2, 1, Qt::AlignTop);
    ElidedLabel::Style header;
    header.size = 10;
    header.weight = QFont::Bold;
    header.ink = ElidedLabel::Ink::dim;
    header.letterSpacing = 0.06;
    ElidedLabel::Style song;
    song.size = 12;
    song.weight = weight;
    return {drawing, addLabel(row, header), addLabel(row + 1, song)};
}

void SongCard::setLanguage(AppLanguage language) {
    m_now.header->setContent(texts::nowPlaying.in(language).toUpper());
    m_next.header->setContent(texts::upNext.in(language).toUpper());
}

void SongCard::setSongs(const QString& current, const std::optional<QString>& next) {
    m_now.song->setContent(current);
    m_next.song->setContent(next.value_or(QString()));
    if (m_next.song->isVisibleTo(this) != next.has_value())
        showNext(next.has_value());
}

void SongCard::showNext(bool isThere) {
    for (QWidget* part : {static_cast<QWidget*>(m_next.icon), static_cast<QWidget*>(m_next.header),
                          static_cast<QWidget*>(m_next.song)})
        part->setVisible(isThere);
    const PanelMetrics& metrics = look().metrics;
    m_grid->setRowMinimumHeight(gapRow, isThere ? metrics.gap(rowGap) - 2 * metrics.px(1) : 0);
    // Whoever holds the card is to know its new height at once, not in a later turn.
    updateGeometry();
}

} // namespace zofra
