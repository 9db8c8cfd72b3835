// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QCheckBox>

namespace zofra {

/// A check box in the panel's look.
class CheckBox final : public QCheckBox {
public:
    CheckBox(const PanelLook& look, QWidget* parent);

    void setTitle(const QString& title);
    [[nodiscard]] const QString& title() const { return m_title; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] bool hitButton(const QPoint& position) const override { return rect().contains(position); }

private:
    void paintBox(QPainter& painter, const QRect& box) const;

    const PanelLook& m_look;
    QString m_title;
};

} // namespace zofra
