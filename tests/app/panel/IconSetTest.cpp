// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/icons/IconSet.h"

#include <QPainter>
#include <QStringList>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

const QStringList monochrome{u"speaker.wave.2.fill"_qs,
                             u"play.fill"_qs,
                             u"stop.fill"_qs,
                             u"antenna.radiowaves.left.and.right"_qs,
                             u"hifispeaker.2.fill"_qs,
                             u"music.note"_qs,
                             u"forward.end.fill"_qs,
                             u"info.circle"_qs,
                             u"power"_qs,
                             u"checkmark"_qs,
                             u"chevron.down"_qs};
const QStringList coloured{u"ZofraLogo"_qs, u"flag-en"_qs, u"flag-nl"_qs, u"flag-fr"_qs, u"flag-de"_qs};

/// How many pixels are drawn at all, and how many plainly.
struct Ink {
    int any = 0;
    int plain = 0;
    bool touchesEdge = false;
};

Ink inkOf(const QImage& image) {
    Ink ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int alpha = qAlpha(image.pixel(x, y));
            ink.any += alpha > 8 ? 1 : 0;
            ink.plain += alpha > 190 ? 1 : 0;
            const bool isEdge = x == 0 || y == 0 || x == image.width() - 1 || y == image.height() - 1;
            ink.touchesEdge = ink.touchesEdge || (isEdge && alpha > 128);
        }
    }
    return ink;
}

TEST(IconSet, HasEveryDrawing) {
    for (const QString& name : monochrome + coloured)
        EXPECT_TRUE(IconSet::contains(name)) << name.toStdString();
    EXPECT_FALSE(IconSet::contains(u"no.such.drawing"_qs));
}

TEST(IconSet, DrawsEachOneSharplyAndWhollyAtEverySize) {
    const IconSet icons;
    for (const QString& name : monochrome) {
        for (const int size : {16, 18, 22, 24, 32, 36, 44, 48}) {
            const QImage image = icons.image(name, size, Qt::black);
            ASSERT_EQ(image.size(), QSize(size, size)) << name.toStdString();
            const Ink ink = inkOf(image);
            EXPECT_FALSE(ink.touchesEdge) << name.toStdString() << " is cut off at " << size;
            // A blurred drawing has hardly a pixel that is plainly drawn.
            EXPECT_GE(ink.plain * 100, ink.any * 33) << name.toStdString() << " at " << size;
        }
    }
}

TEST(IconSet, TakesTheColourAskedFor) {
    const IconSet icons;
    for (const QString& name : monochrome) {
        const QImage image = icons.image(name, 44, QColor(0x12, 0x34, 0x56));
        bool isDrawn = false;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (qAlpha(image.pixel(x, y)) < 255)
                    continue;
                isDrawn = true;
                ASSERT_EQ(image.pixel(x, y) & RGB_MASK, 0x123456U) << name.toStdString();
            }
        }
        EXPECT_TRUE(isDrawn) << name.toStdString();
    }
}

TEST(IconSet, LeavesColouredDrawingsAsTheyAre) {
    const IconSet icons;
    for (const QString& name : coloured)
        EXPECT_EQ(icons.image(name, 48, Qt::green), icons.image(name, 48, Qt::blue)) << name.toStdString();
}

TEST(IconSet, KeepsTheProportionsOfAFlag) {
    const QImage image = IconSet().image(u"flag-nl"_qs, 24, Qt::black);
    EXPECT_EQ(qAlpha(image.pixel(12, 1)), 0);
    EXPECT_EQ(qAlpha(image.pixel(12, 12)), 255);
    EXPECT_EQ(qAlpha(image.pixel(12, 22)), 0);
}

TEST(IconSet, HasNothingForUnknownNamesAndSenselessSizes) {
    const IconSet icons;
    EXPECT_TRUE(icons.image(u"no.such.drawing"_qs, 16, Qt::black).isNull());
    EXPECT_TRUE(icons.pixmap(u"no.such.drawing"_qs, 16, 1, Qt::black).isNull());
    EXPECT_TRUE(icons.image(u"play.fill"_qs, 0, Qt::black).isNull());
    EXPECT_TRUE(icons.image(u"play.fill"_qs, 5000, Qt::black).isNull());
    EXPECT_TRUE(icons.icon(u"no.such.drawing"_qs, Qt::black).isNull());
}

TEST(IconSet, GivesPixmapsAtTheRatioOfTheDevice) {
    const IconSet icons;
    const QPixmap pixmap = icons.pixmap(u"play.fill"_qs, 18, 1.5, Qt::black);
    EXPECT_EQ(pixmap.size(), QSize(27, 27));
    EXPECT_DOUBLE_EQ(pixmap.devicePixelRatio(), 1.5);
    EXPECT_EQ(icons.pixmap(u"play.fill"_qs, 18, 1.5, Qt::black).cacheKey(), pixmap.cacheKey());
    EXPECT_NE(icons.pixmap(u"play.fill"_qs, 18, 1.5, Qt::red).cacheKey(), pixmap.cacheKey());
}

TEST(IconSet, MakesIconsThatAreRenderedWhenDrawn) {
    QIcon icon;
    {
        const IconSet icons;
        icon = icons.icon(u"stop.fill"_qs, Qt::red);
    }
    ASSERT_FALSE(icon.isNull());
    const QImage image = icon.pixmap(QSize(24, 24), 2.0).toImage();
    EXPECT_EQ(image.size(), QSize(48, 48));
    EXPECT_EQ(image.pixelColor(24, 24), QColor(Qt::red));
    EXPECT_LT(icon.pixmap(QSize(24, 24), 1.0, QIcon::Disabled).toImage().pixelColor(12, 12).alpha(), 128);
}

} // namespace
} // namespace zofra::test
