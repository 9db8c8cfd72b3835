// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QCache>
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
class IconSet {
public:
    IconSet();

    /// Whether there is a drawing of this name.
    [[nodiscard]] static bool contains(const QString& name);

    /// The drawing at exactly `pixels`, transparent around it; null when there is no drawing of this name or
    /// `pixels` is empty or larger than 4096 either way. The drawing keeps its proportions and is centred.
    [[nodiscard]] QImage image(const QString& name, QSize pixels, const QColor& color) const;
    [[nodiscard]] QImage image(const QString& name, int pixels, const QColor& color) const {
        return image(name, QSize(pixels, pixels), color);
    }

    /// The same for painting: `size` in device-independent pixels, at the device's ratio.
    [[nodiscard]] QPixmap pixmap(const QString& name, QSize size, qreal devicePixelRatio,
                                 const QColor& color) const;
    [[nodiscard]] QPixmap pixmap(const QString& name, int size, qreal devicePixelRatio,
                                 const QColor& color) const {
        return pixmap(name, QSize(size, size), devicePixelRatio, color);
    }

    /// An icon that renders each size when it is first drawn. May outlive this object.
    [[nodiscard]] QIcon icon(const QString& name, const QColor& color) const;

private:
    mutable QCache<QString, QPixmap> m_pixmaps;
};

} // namespace zofra
