// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/icons/IconSet.h"

#include <QPainter>
#include <QStringList>

#include <algorithm>
#include <cmath>
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
                             u"arrow.clockwise"_qs};
const QStringList trayIcons{u"tray.playing"_qs, u"tray.stopped"_qs, u"tray.buffering"_qs};
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

TEST(IconSetTest, HasEveryDrawing) {
    for (const QString& name : monochrome + coloured + trayIcons)
        EXPECT_TRUE(IconSet::contains(name)) << name.toStdString();
    EXPECT_FALSE(IconSet::contains(u"no.such.drawing"_qs));
}

/// As the guidelines for accessible content define it.
double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}
double contrast(const QColor& a, const QColor& b) {
    const auto [dark, light] = std::minmax({luminance(a), luminance(b)}); // by value
    return (light + 0.05) / (dark + 0.05);
}

/// The share of what a picture draws that stands out from `bar`, three to one.
double shareThatStandsOut(const QImage& picture, const QColor& bar) {
    QImage shown(picture.size(), QImage::Format_RGB32);
    shown.fill(bar);
    QPainter(&shown).drawImage(0, 0, picture);
    int drawn = 0;
    int standingOut = 0;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            if (qAlpha(picture.pixel(x, y)) < 128)
                continue;
            ++drawn;
            standingOut += contrast(shown.pixelColor(x, y), bar) >= 3.0 ? 1 : 0;
        }
    }
    return drawn == 0 ? 0.0 : static_cast<double>(standingOut) / drawn;
}

TEST(IconSetTest, TheTraysPicturesStandOutFromEveryBar) {
    for (const QString& name : trayIcons) {
        for (const int size : {16, 22, 24, 32, 48}) {
            for (const QColor& bar : {QColor(0x20, 0x22, 0x26), QColor(0xf0, 0xf0, 0xf0)})
                EXPECT_GT(shareThatStandsOut(IconSet::image(name, size, Qt::white), bar), 0.6)
                    << name.toStdString() << ' ' << size << " on " << bar.name().toStdString();
        }
    }
}

TEST(IconSetTest, TheTraysPicturesTellPlayingStoppedAndBufferingApart) {
    const auto differing = [&](const QString& a, const QString& b) {
        const QImage one = IconSet::image(a, 16, Qt::white);
        const QImage other = IconSet::image(b, 16, Qt::white);
        int count = 0;
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 16; ++x)
                count += contrast(one.pixelColor(x, y), other.pixelColor(x, y)) >= 3.0 ? 1 : 0;
        }
        return count;
    };
    EXPECT_GE(differing(trayIcons[0], trayIcons[1]), 8);
    EXPECT_GE(differing(trayIcons[1], trayIcons[2]), 8);
    EXPECT_GE(differing(trayIcons[0], trayIcons[2]), 8);
}

TEST(IconSetTest, DrawsEachOneSharplyAndWhollyAtEverySize) {
    for (const QString& name : monochrome) {
        for (const int size : {16, 18, 22, 24, 32, 36, 44, 48}) {
            const QImage image = IconSet::image(name, size, Qt::black);
            ASSERT_EQ(image.size(), QSize(size, size)) << name.toStdString();
            const Ink ink = inkOf(image);
            EXPECT_FALSE(ink.touchesEdge) << name.toStdString() << " is cut off at " << size;
            // A blurred drawing has hardly a pixel that is plainly drawn.
            EXPECT_GE(ink.plain * 100, ink.any * 33) << name.toStdString() << " at " << size;
        }
    }
}

TEST(IconSetTest, TakesTheColourAskedFor) {
    for (const QString& name : monochrome) {
        const QImage image = IconSet::image(name, 44, QColor(0x12, 0x34, 0x56));
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

TEST(IconSetTest, LeavesColouredDrawingsAsTheyAre) {
    for (const QString& name : coloured)
        EXPECT_EQ(IconSet::image(name, 48, Qt::green), IconSet::image(name, 48, Qt::blue))
            << name.toStdString();
}

TEST(IconSetTest, KeepsTheProportionsOfAFlag) {
    const QImage image = IconSet::image(u"flag-nl"_qs, 24, Qt::black);
    EXPECT_EQ(qAlpha(image.pixel(12, 1)), 0);
    EXPECT_EQ(qAlpha(image.pixel(12, 12)), 255);
    EXPECT_EQ(qAlpha(image.pixel(12, 22)), 0);
}

TEST(IconSetTest, HasNothingForUnknownNamesAndSenselessSizes) {
    EXPECT_TRUE(IconSet::image(u"no.such.drawing"_qs, 16, Qt::black).isNull());
    EXPECT_TRUE(IconSet::pixmap(u"no.such.drawing"_qs, {16, 16}, 1, Qt::black).isNull());
    EXPECT_TRUE(IconSet::image(u"play.fill"_qs, 0, Qt::black).isNull());
    EXPECT_TRUE(IconSet::image(u"play.fill"_qs, 5000, Qt::black).isNull());
    EXPECT_TRUE(IconSet::icon(u"no.such.drawing"_qs, Qt::black).isNull());
}

TEST(IconSetTest, GivesPixmapsAtTheRatioOfTheDevice) {
    const QPixmap pixmap = IconSet::pixmap(u"play.fill"_qs, {18, 18}, 1.5, Qt::black);
    EXPECT_EQ(pixmap.size(), QSize(27, 27));
    EXPECT_DOUBLE_EQ(pixmap.devicePixelRatio(), 1.5);
    EXPECT_EQ(IconSet::pixmap(u"play.fill"_qs, {18, 18}, 1.5, Qt::black).cacheKey(), pixmap.cacheKey());
    EXPECT_NE(IconSet::pixmap(u"play.fill"_qs, {18, 18}, 1.5, Qt::red).cacheKey(), pixmap.cacheKey());
}

TEST(IconSetTest, MakesIconsThatAreRenderedWhenDrawn) {
    const QIcon icon = IconSet::icon(u"stop.fill"_qs, Qt::red);
    ASSERT_FALSE(icon.isNull());
    const QImage image = icon.pixmap(QSize(24, 24), 2.0).toImage();
    EXPECT_EQ(image.size(), QSize(48, 48));
    EXPECT_EQ(image.pixelColor(24, 24), QColor(Qt::red));
    EXPECT_LT(icon.pixmap(QSize(24, 24), 1.0, QIcon::Disabled).toImage().pixelColor(12, 12).alpha(), 128);
}

TEST(IconSetTest, KeepsWhatItHasDrawn) {
    const QImage first = IconSet::image(u"play.fill"_qs, 32, Qt::white);
    EXPECT_EQ(IconSet::image(u"play.fill"_qs, 32, Qt::white).cacheKey(), first.cacheKey());
    for (const QImage& other :
         {IconSet::image(u"play.fill"_qs, 33, Qt::white), IconSet::image(u"play.fill"_qs, 32, Qt::red),
          IconSet::image(u"stop.fill"_qs, 32, Qt::white)})
        EXPECT_NE(other, first);
}

} // namespace
} // namespace zofra::test
