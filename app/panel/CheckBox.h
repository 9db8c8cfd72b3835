// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"

namespace zofra {

/// A box that is on or off, and a title that is part of it.
class CheckBox final : public PanelButton {
public:
    CheckBox(const PanelLook& look, QWidget* parent);

protected:
    [[nodiscard]] QSize bodySize() const override;
    void paintBody(QPainter& painter, const QRect& body) override;
    [[nodiscard]] QRect ringed() const override;
};

} // namespace zofra
