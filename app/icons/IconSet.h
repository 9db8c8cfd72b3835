// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QSize>
#include <QString>

namespace zofra {

/// The program's drawings, by name ("play.fill", "flag-nl", "ZofraLogo" and so on). Monochrome ones take the
/// colour that is asked for, coloured ones ignore it. Nothing is read or rendered before it is asked for, and
/// what was rendered is kept in a small cache. Main thread only.
struct IconSet {
    /// Whether there is a drawing of this name.
    [[nodiscard]] static bool contains(const QString& name);

    /// The drawing, `pixels` wide and high, transparent around it; null when there is no drawing of this name
    /// or `pixels` is not within 1...4096. The drawing keeps its proportions and is centred.
    [[nodiscard]] static QImage image(const QString& name, int pixels, const QColor& color);

    /// The same for painting: `size` in device-independent pixels, at the device's ratio.
    [[nodiscard]] static QPixmap pixmap(const QString& name, QSize size, qreal devicePixelRatio,
                                        const QColor& color);

    /// An icon that renders each size when it is first drawn.
    [[nodiscard]] static QIcon icon(const QString& name, const QColor& color);
};

} // namespace zofra
