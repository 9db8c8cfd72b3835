// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/icons/IconSet.h"

#include <QCache>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>
#include <utility>

// Outside of any namespace, as the macro asks for. Needed because the resources live in a static library.
static bool registerIconResources() {
    Q_INIT_RESOURCE(icons);
    return true;
}

namespace zofra {

namespace {

constexpr int cacheBytes = 2 * 1024 * 1024;
constexpr int longestEdge = 4096;

QString pathOf(const QString& name) {
    [[maybe_unused]] static const bool isRegistered = registerIconResources();
    return u":/zofra/icons/%1.svg"_qs.arg(name);
}

// Qt's renderer takes currentColor from nowhere, so the colour is written into the drawing.
QByteArray drawing(const QString& name, const QColor& color) {
    QFile file(pathOf(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll().replace("currentColor", color.name(QColor::HexRgb).toLatin1());
}

QImage draw(const QString& name, QSize pixels, const QColor& color) {
    const QByteArray source = drawing(name, color);
    if (source.isEmpty())
        return {};
    QSvgRenderer renderer(source);
    if (!renderer.isValid())
        return {};
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(color.alphaF());
    QRectF fitted({}, renderer.viewBoxF().size().scaled(QSizeF(pixels), Qt::KeepAspectRatio));
    fitted.moveCenter(QRectF({}, QSizeF(pixels)).center());
    renderer.render(&painter, fitted);
    return image;
}

/// Kept, for the same few are asked for with each window and each line that is drawn.
QImage render(const QString& name, QSize pixels, const QColor& color) {
    if (pixels.isEmpty() || std::max(pixels.width(), pixels.height()) > longestEdge)
        return {};
    static QCache<std::pair<QString, quint64>, QImage> kept(cacheBytes);
    const std::pair key(name, quint64{color.rgba()} << 32 | quint64(pixels.width()) << 16 |
                                  quint64(pixels.height()));
    if (const QImage* image = kept.object(key))
        return *image;
    QImage image = draw(name, pixels, color);
    if (!image.isNull())
        kept.insert(key, new QImage(image), image.sizeInBytes());
    return image;
}

/// Renders on demand at whatever size and ratio is drawn.
class DrawingEngine final : public QIconEngine {
public:
    DrawingEngine(QString name, const QColor& color)
        : m_name(std::move(name))
        , m_color(color) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
        painter->drawPixmap(rect, pixmap(rect.size() * ratio, mode, state));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        QColor color = m_color;
        if (mode == QIcon::Disabled)
            color.setAlphaF(color.alphaF() * 0.4F);
        return QPixmap::fromImage(render(m_name, size, color));
    }
    QIconEngine* clone() const override { return new DrawingEngine(m_name, m_color); }
    bool isNull() override { return !IconSet::contains(m_name); }

private:
    QString m_name;
    QColor m_color;
};

} // namespace

bool IconSet::contains(const QString& name) {
    return QFile::exists(pathOf(name));
}

QImage IconSet::image(const QString& name, int pixels, const QColor& color) {
    return render(name, {pixels, pixels}, color);
}

QPixmap IconSet::pixmap(const QString& name, QSize size, qreal devicePixelRatio, const QColor& color) {
    QPixmap pixmap = QPixmap::fromImage(render(name, (QSizeF(size) * devicePixelRatio).toSize(), color));
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

QIcon IconSet::icon(const QString& name, const QColor& color) {
    return QIcon(new DrawingEngine(name, color));
}

} // namespace zofra
