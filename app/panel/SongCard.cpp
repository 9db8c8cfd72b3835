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
    const IconLabel::Style style{.cellWidth = iconColumn,
                                 .cellHeight = 20,
                                 .alignment = Qt::AlignLeft,
                                 .backdrop = Backdrop::card,
                                 .bleeds = 0};
    auto* drawing = new IconLabel(look(), icon, style, this);
    m_grid->addWidget(drawing, row, 0, 2, 1, Qt::AlignTop);
    return {
        drawing,
        addLabel(row,
                 {.size = 10, .weight = QFont::Bold, .ink = ElidedLabel::Ink::dim, .letterSpacing = 0.06}),
        addLabel(row + 1, {.size = 12, .weight = weight})};
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
    for (QWidget* part : std::initializer_list<QWidget*>{m_next.icon, m_next.header, m_next.song})
        part->setVisible(isThere);
    const PanelMetrics& metrics = look().metrics;
    m_grid->setRowMinimumHeight(gapRow, isThere ? metrics.gap(rowGap) - 2 * metrics.px(1) : 0);
    // Whoever holds the card is to know its new height at once, not in a later turn.
    updateGeometry();
}

} // namespace zofra
