// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"

#include <QVariantAnimation>

namespace zofra {

/// The one prominent button: play or stop. While sound is on its way, an arc turns around its drawing.
class PlayButton final : public PanelButton {
public:
    PlayButton(const PanelLook& look, QWidget* parent);

    /// `icon` names a drawing.
    void setContent(const QString& icon, const QString& title);
    [[nodiscard]] const QString& iconName() const { return m_icon; }
    /// Shows whether sound is still being waited for; `word` says so to screen readers and on hover.
    void setWaiting(bool isWaiting, const QString& word);
    [[nodiscard]] bool isWaiting() const { return m_isWaiting; }

protected:
    [[nodiscard]] QSize bodySize() const override;
    void paintBody(QPainter& painter, const QRect& body) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    [[nodiscard]] int contentWidth() const;
    void turn();

    QString m_icon;
    bool m_isWaiting = false;
    QVariantAnimation m_turning;
};

} // namespace zofra
