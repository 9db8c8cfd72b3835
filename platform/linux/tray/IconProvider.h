// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QImage>
#include <QString>

namespace zofra {

/// Renders the program's own drawings. Main thread only.
class IconProvider {
public:
    virtual ~IconProvider() = default;
    /// The drawing `symbolName` (for example "play.fill"), `pixels` wide and high, its strokes in `color`; a
    /// null image where there is no such drawing.
    [[nodiscard]] virtual QImage image(const QString& symbolName, int pixels, const QColor& color) const = 0;
};

} // namespace zofra
