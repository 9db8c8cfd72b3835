// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"

namespace zofra {

/// The one prominent button: play or stop.
class PlayButton final : public PanelButton {
public:
    PlayButton(const PanelLook& look, QWidget* parent);

    /// `icon` names a drawing.
    void setContent(const QString& icon, const QString& title);
    [[nodiscard]] const QString& title() const { return m_title; }
    [[nodiscard]] const QString& iconName() const { return m_icon; }

protected:
    [[nodiscard]] QSize bodySize() const override;
    void paintBody(QPainter& painter, const QRect& body) override;
    [[nodiscard]] qreal radius() const override;

private:
    [[nodiscard]] int contentWidth() const;

    QString m_icon;
    QString m_title;
};

} // namespace zofra
