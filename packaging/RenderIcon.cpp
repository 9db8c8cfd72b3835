// SPDX-License-Identifier: GPL-3.0-or-later
// Draws an SVG file into square PNG files while the package is built: RenderIcon FILE.svg FOLDER SIZE...
// writes FOLDER/SIZE.png for each size in pixels. Not installed.

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QTextStream>

int main(int argc, char** argv) {
    QTextStream trouble(stderr);
    if (argc < 4) {
        trouble << "usage: RenderIcon FILE.svg FOLDER SIZE...\n";
        return 2;
    }
    QSvgRenderer drawing(QString::fromLocal8Bit(argv[1]));
    if (!drawing.isValid()) {
        trouble << argv[1] << ": is no SVG drawing\n";
        return 1;
    }
    const QDir folder(QString::fromLocal8Bit(argv[2]));
    for (int index = 3; index < argc; ++index) {
        bool isNumber = false;
        const int size = QByteArray(argv[index]).toInt(&isNumber);
        if (!isNumber || size < 1 || size > 1024) {
            trouble << argv[index] << ": is no size between 1 and 1024\n";
            return 2;
        }
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        drawing.render(&painter);
        painter.end();
        const QString path = folder.filePath(QStringLiteral("%1.png").arg(size));
        if (!image.save(path)) {
            trouble << path << ": cannot be written\n";
            return 1;
        }
    }
    return 0;
}
