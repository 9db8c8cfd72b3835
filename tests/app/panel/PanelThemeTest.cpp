// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelTheme.h"

#include <QApplication>
#include <QStyle>

#include <gtest/gtest.h>
#include <vector>

namespace zofra::test {
namespace {

using Scheme = DesktopAppearance::ColorScheme;
using Contrast = DesktopAppearance::Contrast;

QPalette toolkitPalette() {
    QPalette palette(QColor(0xefefef));
    palette.setColor(QPalette::Highlight, QColor(0x308cc6));
    return palette;
}

std::vector<QColor> manyAccents() {
    std::vector<QColor> colors{Qt::black,        Qt::white,        Qt::gray,
                               QColor(0x3584e4), QColor(0x3daee9), QColor(0xf5c211)};
    for (int hue = 0; hue < 360; hue += 15) {
        for (const int saturation : {60, 150, 255}) {
            for (const int lightness : {30, 90, 128, 180, 230})
                colors.push_back(QColor::fromHsl(hue, saturation, lightness));
        }
    }
    return colors;
}

TEST(PanelThemeTest, IsRedWhereTheDesktopSaysNothing) {
    EXPECT_EQ(PanelTheme::make({Scheme::light, Contrast::normal, std::nullopt}, toolkitPalette()).accent,
              QColor(0xc8102e));
    EXPECT_EQ(PanelTheme::make({Scheme::dark, Contrast::normal, std::nullopt}, toolkitPalette()).accent,
              QColor(0xff4d5e));
}

TEST(PanelThemeTest, TakesThePortalsAccentBeforeThePalettes) {
    QPalette palette = toolkitPalette();
    palette.setColor(QPalette::Highlight, QColor(0x0b6b2f));
    EXPECT_EQ(PanelTheme::make({Scheme::light, Contrast::normal, std::nullopt}, palette).accent,
              QColor(0x0b6b2f));
    EXPECT_EQ(PanelTheme::make({Scheme::light, Contrast::normal, QColor(0x5a2ca0)}, palette).accent,
              QColor(0x5a2ca0));
}

TEST(PanelThemeTest, DoesNotTakeAGreySelectionForAnAccent) {
    QPalette palette = toolkitPalette();
    palette.setColor(QPalette::Highlight, QColor(0x808080));
    EXPECT_EQ(PanelTheme::make({Scheme::light, Contrast::normal, std::nullopt}, palette).accent,
              QColor(0xc8102e));
}

TEST(PanelThemeTest, FollowsThePortalsSchemeAndElseThePalette) {
    const QPalette light(QColor(0xefefef));
    const QPalette dark(QColor(0x202020));
    EXPECT_FALSE(PanelTheme::make({}, light).isDark);
    EXPECT_TRUE(PanelTheme::make({}, dark).isDark);
    EXPECT_TRUE(PanelTheme::make({Scheme::dark, Contrast::normal, std::nullopt}, light).isDark);
    EXPECT_FALSE(PanelTheme::make({Scheme::light, Contrast::normal, std::nullopt}, dark).isDark);
}

TEST(PanelThemeTest, IsHighContrastWhenAskedOrWhenThePaletteIs) {
    EXPECT_FALSE(PanelTheme::make({}, toolkitPalette()).isHighContrast);
    EXPECT_TRUE(
        PanelTheme::make({Scheme::dark, Contrast::high, std::nullopt}, toolkitPalette()).isHighContrast);
    QPalette stark;
    stark.setColor(QPalette::Window, Qt::black);
    stark.setColor(QPalette::WindowText, Qt::white);
    EXPECT_TRUE(PanelTheme::make({}, stark).isHighContrast);
}

TEST(PanelThemeTest, CanBeReadWhateverTheAccent) {
    for (const Scheme scheme : {Scheme::light, Scheme::dark}) {
        for (const Contrast contrast : {Contrast::normal, Contrast::high}) {
            const double least = contrast == Contrast::high ? 7.0 : 4.5;
            for (const QColor& accent : manyAccents()) {
                const PanelTheme theme = PanelTheme::make({scheme, contrast, accent}, toolkitPalette());
                const std::string name = accent.name().toStdString() + (theme.isDark ? " dark" : " light");
                EXPECT_GE(contrastRatio(theme.onAccent, theme.accent), least) << name;
                EXPECT_GE(contrastRatio(theme.accentText, theme.window), least) << name;
                EXPECT_GE(contrastRatio(theme.accentText, theme.card), 4.5) << name;
                EXPECT_GE(contrastRatio(theme.text, theme.window), 7.0) << name;
                EXPECT_GE(contrastRatio(theme.text, theme.pressed), 7.0) << name;
                EXPECT_GE(contrastRatio(theme.dim, theme.window), 4.5) << name;
                EXPECT_GE(contrastRatio(theme.dim, theme.card), 4.5) << name;
                // The button while it is touched.
                for (const double shade : {0.08, 0.16})
                    EXPECT_GE(contrastRatio(theme.onAccent, theme.shadedAccent(shade)), least) << name;
                // The line of a menu that is gone to, and what stands on it.
                for (const bool isPressed : {false, true}) {
                    const QColor ground = theme.menuMark(isPressed);
                    EXPECT_GE(contrastRatio(theme.text, ground), 4.5) << name;
                    EXPECT_GE(contrastRatio(theme.accentText, ground), 3.0) << name << ", the check mark";
                }
                // Chevrons and drawings on what is under the pointer.
                EXPECT_GE(contrastRatio(theme.dim, theme.hover), 3.0) << name;
                EXPECT_GE(contrastRatio(theme.dim, theme.pressed), 3.0) << name;
                // Where things are: the slider's track, the box, the ring.
                EXPECT_GE(contrastRatio(theme.mark, theme.window), 3.0) << name;
                EXPECT_GE(contrastRatio(theme.mark, theme.card), 3.0) << name;
            }
        }
    }
}

TEST(PanelThemeTest, CountsContrastAsTheStandardDoes) {
    EXPECT_DOUBLE_EQ(contrastRatio(Qt::black, Qt::white), 21.0);
    EXPECT_DOUBLE_EQ(contrastRatio(Qt::white, Qt::white), 1.0);
    EXPECT_NEAR(contrastRatio(QColor(0x777777), Qt::white), 4.48, 0.01);
}

} // namespace
} // namespace zofra::test
