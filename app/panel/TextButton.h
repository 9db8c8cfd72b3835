// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"

namespace zofra {

/// A quiet button with a title. The default one wears a pale ring while no other has the focus.
class TextButton final : public PanelButton {
public:
    TextButton(const PanelLook& look, QWidget* parent);

    void setTitle(const QString& title);
    [[nodiscard]] const QString& title() const { return m_title; }

protected:
    [[nodiscard]] QSize bodySize() const override;
    void paintBody(QPainter& painter, const QRect& body) override;
    [[nodiscard]] qreal radius() const override;
    [[nodiscard]] QColor restingRing() const override;

private:
    QString m_title;
};

/// A few words that lead somewhere, in the accent colour.
class LinkButton final : public PanelButton {
public:
    LinkButton(const PanelLook& look, QWidget* parent);

    void setTitle(const QString& title);
    [[nodiscard]] const QString& title() const { return m_title; }

protected:
    [[nodiscard]] QSize bodySize() const override;
    void paintBody(QPainter& painter, const QRect& body) override;
    [[nodiscard]] qreal radius() const override;
    /// Close by, for words stand before it.
    [[nodiscard]] int ringReach() const override { return look().metrics.px(3); }

private:
    [[nodiscard]] QFont textFont() const;

    QString m_title;
};

} // namespace zofra
