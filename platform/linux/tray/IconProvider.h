// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <QStyle>

#include <memory>

namespace zofra {

/// The program's own drawings, and what else makes its menus look like it. Main thread only.
class IconProvider {
public:
    virtual ~IconProvider() = default;
    /// The drawing ("play.fill"), `pixels` wide and high, strokes in `color`; null where there is none.
    [[nodiscard]] virtual QImage image(const QString& symbolName, int pixels, const QColor& color) const = 0;
    /// What a menu that opens now is drawn with, in the colours of its standard palette. Null: the desktop's.
    [[nodiscard]] virtual std::shared_ptr<QStyle> menuStyle() const { return nullptr; }
};

} // namespace zofra
