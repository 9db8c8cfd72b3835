// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/app/panel/PanelImages.h"
#include "tests/app/panel/PanelWorld.h"

#include <QDir>
#include <QFile>
#include <QScreen>

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace zofra::test {

using Scheme = DesktopAppearance::ColorScheme;
using Contrast = DesktopAppearance::Contrast;
inline const DesktopAppearance light{Scheme::light, Contrast::normal, std::nullopt};
inline const DesktopAppearance dark{Scheme::dark, Contrast::normal, std::nullopt};

inline const std::vector<QString> allLanguages{QStringLiteral("en"), QStringLiteral("nl"),
                                               QStringLiteral("fr"), QStringLiteral("de")};
inline const std::vector<DesktopAppearance> bothSchemes{light, dark};

inline QString schemeName(DesktopAppearance::ColorScheme scheme) {
    return scheme == DesktopAppearance::ColorScheme::dark ? QStringLiteral("dark") : QStringLiteral("light");
}

// Pictures are written anew with ZOFRA_UPDATE_GOLDEN=1; look at them before keeping them.
inline bool updatesGolden() {
    return qEnvironmentVariableIntValue("ZOFRA_UPDATE_GOLDEN") == 1;
}

inline QString goldenPath(const QString& name) {
    return QStringLiteral(ZOFRA_SOURCE_DIR "/tests/app/panel/golden/%1.png").arg(name);
}

/// One of sixteen steps of a channel, well within what a comparison tolerates.
inline int coarse(int channel) {
    return (channel * 15 + 127) / 255 * 17;
}

/// A picture as it is kept: in few colours.
inline QImage inFewColors(const QImage& image) {
    QList<QRgb> colors;
    QImage kept(image.size(), QImage::Format_Indexed8);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb exact = image.pixel(x, y);
            const QRgb color = qRgb(coarse(qRed(exact)), coarse(qGreen(exact)), coarse(qBlue(exact)));
            qsizetype index = colors.indexOf(color);
            if (index < 0) {
                index = colors.size();
                colors << color;
            }
            if (index > 255)
                return image;
            kept.scanLine(y)[x] = static_cast<uchar>(index);
        }
    }
    kept.setColorTable(colors);
    return kept;
}

/// Compares with the picture kept under this name; one that differs is left in the temporary folder.
inline void expectGolden(const QImage& now, const QString& name) {
    if (updatesGolden()) {
        QDir().mkpath(QFileInfo(goldenPath(name)).path());
        ASSERT_TRUE(inFewColors(now).save(goldenPath(name), "PNG", 0));
    }
    const QImage golden = QImage(goldenPath(name)).convertToFormat(QImage::Format_RGB32);
    ASSERT_FALSE(golden.isNull()) << goldenPath(name).toStdString() << " is missing";
    if (looksTheSame(now, golden))
        return;
    const QString kept =
        QDir::temp().filePath(QStringLiteral("zofra-panel-") + name + QStringLiteral(".png"));
    now.save(kept);
    const auto found = difference(now, golden);
    FAIL() << name.toStdString() << ": " << (found ? found->pixels : -1)
           << " pixels differ; the new picture is " << kept.toStdString();
}

/// Leaves a picture for whoever looks at all of them, if somebody does.
inline void leave(const QImage& image, const QString& name) {
    const QString folder = qEnvironmentVariable("ZOFRA_PICTURES");
    if (!folder.isEmpty()) {
        ASSERT_TRUE(image.save(QDir(folder).filePath(name + QStringLiteral(".png")), "PNG", 90));
    }
}

/// Scales to draw at: all of them for whoever looks.
inline std::vector<qreal> scales() {
    return qEnvironmentVariableIsEmpty("ZOFRA_PICTURES") ? std::vector<qreal>{1}
                                                         : std::vector<qreal>{1, 1.5, 2};
}

inline QScreen* screenNamed(const std::string& name) {
    const auto all = QGuiApplication::screens();
    const auto found = std::find_if(all.begin(), all.end(), [&name](const QScreen* screen) {
        return screen->name() == QString::fromStdString(name);
    });
    return found == all.end() ? nullptr : *found;
}

} // namespace zofra::test
