// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelLook.h"

#include <QWidget>

namespace zofra {

/// A rounded surface with a fine border that groups what stands on it.
class Card : public QWidget {
public:
    Card(const PanelLook& look, QWidget* parent)
        : QWidget(parent)
        , m_look(look) {
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    [[nodiscard]] const PanelLook& look() const { return m_look; }
    void paintEvent(QPaintEvent* event) final;

private:
    const PanelLook& m_look;
};

/// A fine line across.
class Separator final : public QWidget {
public:
    Separator(const PanelLook& look, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const PanelLook& m_look;
};

} // namespace zofra
