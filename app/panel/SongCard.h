// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/Card.h"
#include "app/panel/ElidedLabel.h"
#include "app/panel/IconLabel.h"
#include "stations/AppLanguage.h"

#include <optional>

class QGridLayout;

namespace zofra {

/// What is on air now and, where known, next.
class SongCard final : public Card {
public:
    SongCard(const PanelLook& look, QWidget* parent);

    void setLanguage(AppLanguage language);
    /// The row of the next song is there only when there is one.
    void setSongs(const QString& current, const std::optional<QString>& next);

private:
    struct Row {
        IconLabel* icon = nullptr;
        ElidedLabel* header = nullptr;
        ElidedLabel* song = nullptr;
    };
    Row addRow(int row, const QString& icon, QFont::Weight weight);
    ElidedLabel* addLabel(int row, ElidedLabel::Style style);
    void showNext(bool isThere);

    QGridLayout* m_grid;
    Row m_now;
    Row m_next;
};

} // namespace zofra
