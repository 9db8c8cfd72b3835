// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/SongCard.h"

#include "stations/texts/InterfaceTexts.h"

#include <QGridLayout>
#include <QVBoxLayout>

namespace zofra {

namespace {

constexpr qreal padding = 13;
constexpr qreal rowGap = 10;
constexpr qreal iconColumn = 20;
constexpr qreal iconGap = 10;

} // namespace

SongCard::SongCard(const PanelLook& look, QWidget* parent)
    : m_card(new Card(look, parent)) {
    const PanelMetrics& metrics = look.metrics;
    auto* rows = new QVBoxLayout(m_card);
    const int margin = metrics.bleed() + metrics.px(padding);
    rows->setContentsMargins(margin, margin, margin, margin);
    rows->setSpacing(metrics.px(rowGap));
    m_now = makeRow(look, QStringLiteral("music.note"), QFont::DemiBold);
    m_next = makeRow(look, QStringLiteral("forward.end.fill"), QFont::Normal);
    rows->addWidget(m_now.box);
    rows->addWidget(m_next.box);
}

SongCard::Row SongCard::makeRow(const PanelLook& look, const QString& icon, QFont::Weight weight) {
    const PanelMetrics& metrics = look.metrics;
    Row row;
    row.box = new QWidget(m_card);
    auto* grid = new QGridLayout(row.box);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(metrics.px(iconGap));
    grid->setVerticalSpacing(metrics.px(1));

    IconLabel::Style iconStyle;
    iconStyle.cellWidth = iconColumn;
    iconStyle.cellHeight = 20;
    iconStyle.alignment = Qt::AlignLeft;
    iconStyle.backdrop = Backdrop::card;
    iconStyle.bleeds = 0;
    grid->addWidget(new IconLabel(look, icon, iconStyle, row.box), 0, 0, 2, 1, Qt::AlignTop);

    ElidedLabel::Style header;
    header.size = 10;
    header.weight = QFont::Bold;
    header.ink = ElidedLabel::Ink::dim;
    header.bleed = ElidedLabel::Bleed::none;
    header.backdrop = Backdrop::card;
    header.letterSpacing = 0.06;
    row.header = new ElidedLabel(look, header, row.box);
    grid->addWidget(row.header, 0, 1);

    ElidedLabel::Style song;
    song.size = 12;
    song.weight = weight;
    song.bleed = ElidedLabel::Bleed::none;
    song.backdrop = Backdrop::card;
    row.song = new ElidedLabel(look, song, row.box);
    grid->addWidget(row.song, 1, 1);
    grid->setColumnStretch(1, 1);
    return row;
}

void SongCard::setLanguage(AppLanguage language) {
    m_now.header->setContent(texts::nowPlaying.in(language).toUpper());
    m_next.header->setContent(texts::upNext.in(language).toUpper());
}

void SongCard::setSongs(const QString& current, const std::optional<QString>& next) {
    m_now.song->setContent(current);
    m_next.song->setContent(next.value_or(QString()));
    if (m_next.box->isVisibleTo(m_card) == next.has_value())
        return;
    m_next.box->setVisible(next.has_value());
    // Whoever holds the card is to know its new height at once, not in a later turn.
    m_card->updateGeometry();
}

} // namespace zofra
