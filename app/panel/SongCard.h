// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/Card.h"
#include "app/panel/ElidedLabel.h"
#include "app/panel/IconLabel.h"
#include "stations/AppLanguage.h"
#include "stations/texts/InterfaceTexts.h"

#include <QGridLayout>

#include <optional>

namespace zofra {

/// What is on air now and, where known, next.
class SongCard final : public Card {
public:
    SongCard(const PanelLook& look, QWidget* parent)
        : Card(look, parent)
        , m_grid(new QGridLayout(this)) {
        const PanelMetrics& metrics = look.metrics;
        const int side = metrics.bleed() + metrics.px(padding);
        const int margin = metrics.bleed() + metrics.gap(padding);
        m_grid->setContentsMargins(side, margin, side, margin);
        m_grid->setHorizontalSpacing(metrics.px(iconGap));
        m_grid->setVerticalSpacing(metrics.px(1));
        m_grid->setColumnStretch(1, 1);
        m_now = addRow(nowRow, u"music.note"_qs, QFont::DemiBold);
        m_next = addRow(nextRow, u"forward.end.fill"_qs, QFont::Normal);
        showNext(false);
    }

    void setLanguage(AppLanguage language) {
        m_now.header->setContent(texts::nowPlaying.in(language).toUpper());
        m_next.header->setContent(texts::upNext.in(language).toUpper());
    }
    /// The row of the next song is there only when there is one.
    void setSongs(const QString& current, const std::optional<QString>& next) {
        m_now.song->setContent(current);
        m_next.song->setContent(next.value_or(QString()));
        if (m_next.song->isVisibleTo(this) != next.has_value())
            showNext(next.has_value());
    }

private:
    static constexpr qreal padding = 13;
    static constexpr qreal rowGap = 10;
    static constexpr qreal iconColumn = 20;
    static constexpr qreal iconGap = 10;
    /// Rows of the grid: a header and a song, the gap, a header and a song.
    static constexpr int nowRow = 0;
    static constexpr int gapRow = 2;
    static constexpr int nextRow = 3;

    struct Row {
        IconLabel* icon = nullptr;
        ElidedLabel* header = nullptr;
        ElidedLabel* song = nullptr;
    };
    Row addRow(int row, const QString& icon, QFont::Weight weight) {
        const IconLabel::Style style{.cellWidth = iconColumn,
                                     .cellHeight = 20,
                                     .alignment = Qt::AlignLeft,
                                     .backdrop = Backdrop::card,
                                     .bleeds = 0};
        auto* drawing = new IconLabel(look(), icon, style, this);
        m_grid->addWidget(drawing, row, 0, 2, 1, Qt::AlignTop);
        return {drawing,
                addLabel(
                    row,
                    {.size = 10, .weight = QFont::Bold, .ink = ElidedLabel::Ink::dim, .letterSpacing = 0.06}),
                addLabel(row + 1, {.size = 12, .weight = weight})};
    }
    ElidedLabel* addLabel(int row, ElidedLabel::Style style) {
        style.bleed = ElidedLabel::Bleed::none;
        style.backdrop = Backdrop::card;
        auto* label = new ElidedLabel(look(), style, this);
        m_grid->addWidget(label, row, 1);
        return label;
    }
    void showNext(bool isThere) {
        for (QWidget* part : std::initializer_list<QWidget*>{m_next.icon, m_next.header, m_next.song})
            part->setVisible(isThere);
        const PanelMetrics& metrics = look().metrics;
        m_grid->setRowMinimumHeight(gapRow, isThere ? metrics.gap(rowGap) - 2 * metrics.px(1) : 0);
        // Whoever holds the card is to know its new height at once, not in a later turn.
        updateGeometry();
    }

    QGridLayout* m_grid;
    Row m_now;
    Row m_next;
};

} // namespace zofra
