// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/Card.h"
#include "app/panel/ElidedLabel.h"
#include "app/panel/IconLabel.h"
#include "stations/AppLanguage.h"

#include <QWidget>

#include <optional>

namespace zofra {

/// What is on air now and, where known, next.
class SongCard final {
public:
    SongCard(const PanelLook& look, QWidget* parent);

    [[nodiscard]] QWidget* widget() const { return m_card; }
    void setLanguage(AppLanguage language);
    /// The row of the next song is there only when there is one.
    void setSongs(const QString& current, const std::optional<QString>& next);

    [[nodiscard]] ElidedLabel* currentSong() const { return m_now.song; }
    [[nodiscard]] ElidedLabel* nextSong() const { return m_next.song; }

private:
    struct Row {
        QWidget* box = nullptr;
        ElidedLabel* header = nullptr;
        ElidedLabel* song = nullptr;
    };
    Row makeRow(const PanelLook& look, const QString& icon, QFont::Weight weight);

    Card* m_card;
    Row m_now;
    Row m_next;
};

} // namespace zofra
