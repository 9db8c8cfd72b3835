// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelTheme.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zofra {

namespace {

constexpr double textContrast = 4.5;
constexpr double highTextContrast = 7.0;
constexpr double markContrast = 3.0;

double luminance(const QColor& color) {
    const auto linear = [](float channel) {
        const double c = channel;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

// What the toolkit shows when no desktop has said anything.
bool isToolkitHighlight(const QColor& color) {
    static constexpr std::array<QRgb, 2> defaults{0xff308cc6, 0xff000080};
    return std::find(defaults.begin(), defaults.end(), color.rgb()) != defaults.end();
}

std::optional<QColor> accentOf(const DesktopAppearance& desktop, const QPalette& palette) {
    if (desktop.accent)
        return desktop.accent;
    const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
    // A grey selection is a matter of taste in selections; a grey play button would look switched off.
    if (isToolkitHighlight(highlight) || highlight.alpha() < 255 || highlight.hslSaturationF() < 0.15F)
        return std::nullopt;
    return highlight;
}

// Moves `color` towards `goal` until it reaches `ratio` against `ground`; at most all the way.
QColor readable(const QColor& color, const QColor& ground, const QColor& goal, double ratio) {
    for (int step = 0; step <= 20; ++step) {
        const QColor candidate = mixed(goal, color, step / 20.0);
        if (contrastRatio(candidate, ground) >= ratio)
            return candidate;
    }
    return goal;
}

// Text on the accent colour is white, as on buttons people know, unless the colour is too pale for that.
void setAccent(PanelTheme& theme, const QColor& accent, double ratio) {
    const QColor ink(0x1b, 0x05, 0x08);
    const QColor white = Qt::white;
    theme.accent = accent;
    if (!theme.isDark && contrastRatio(white, accent) >= 3.0) {
        theme.onAccent = white;
        theme.accent = readable(accent, white, Qt::black, ratio);
    } else if (contrastRatio(ink, accent) >= ratio) {
        theme.onAccent = ink;
    } else if (contrastRatio(white, accent) >= ratio) {
        theme.onAccent = white;
    } else {
        theme.onAccent =
            contrastRatio(white, accent) > contrastRatio(Qt::black, accent) ? white : QColor(Qt::black);
        theme.accent =
            readable(accent, theme.onAccent, theme.onAccent == white ? Qt::black : Qt::white, ratio);
    }
    // Of the two grounds it stands on, the one that is nearer to it.
    theme.accentText = theme.isDark ? readable(accent, theme.card, Qt::white, ratio)
                                    : readable(accent, theme.window, Qt::black, ratio);
}

/// What the rest stands on and is written in.
struct Grounds {
    QRgb window, card, line, text, dim, hover, pressed;
};
constexpr Grounds light{0xfbfbfd, 0xffffff, 0xe4e5ea, 0x1d1e22, 0x6b6e78, 0xf0f1f5, 0xe4e5ea};
constexpr Grounds lightContrast{0xffffff, 0xffffff, 0x3a3b42, 0x000000, 0x26272c, 0xf0f1f5, 0xe4e5ea};
constexpr Grounds dark{0x1f2024, 0x292a2f, 0x3a3b42, 0xf2f2f5, 0xa0a3ad, 0x34353b, 0x3f4048};
constexpr Grounds darkContrast{0x000000, 0x000000, 0xd0d0d4, 0xffffff, 0xe6e6ea, 0x34353b, 0x3f4048};

void setGrounds(PanelTheme& theme) {
    const Grounds& grounds = theme.isDark ? (theme.isHighContrast ? darkContrast : dark)
                                          : (theme.isHighContrast ? lightContrast : light);
    theme.window = grounds.window;
    theme.card = grounds.card;
    theme.line = grounds.line;
    theme.text = grounds.text;
    theme.dim = grounds.dim;
    theme.hover = grounds.hover;
    theme.pressed = grounds.pressed;
    theme.mark = readable(theme.line, theme.isDark ? theme.card : theme.window, theme.text, markContrast);
}

} // namespace

double contrastRatio(const QColor& a, const QColor& b) {
    const double la = luminance(a);
    const double lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QColor mixed(const QColor& top, const QColor& bottom, double share) {
    const auto channel = [share](int t, int b) {
        return static_cast<int>(std::lround(t * share + b * (1 - share)));
    };
    return {channel(top.red(), bottom.red()), channel(top.green(), bottom.green()),
            channel(top.blue(), bottom.blue())};
}

QColor PanelTheme::shadedAccent(double shade) const {
    const bool isDarkInk = contrastRatio(onAccent, Qt::black) < contrastRatio(onAccent, Qt::white);
    return mixed(isDarkInk ? Qt::white : Qt::black, accent, shade);
}

QColor PanelTheme::menuMark(bool isPressed) const {
    return mixed(accentText, card, isPressed ? 0.24 : 0.14);
}

PanelTheme PanelTheme::make(const DesktopAppearance& desktop, const QPalette& palette) {
    PanelTheme theme;
    const QColor window = palette.color(QPalette::Active, QPalette::Window);
    const QColor text = palette.color(QPalette::Active, QPalette::WindowText);
    using Scheme = DesktopAppearance::ColorScheme;
    theme.isDark = desktop.colorScheme == Scheme::unsaid ? luminance(window) < luminance(text)
                                                         : desktop.colorScheme == Scheme::dark;
    // Pure black on pure white, or the reverse, is what contrast themes are made of.
    theme.isHighContrast =
        desktop.contrast == DesktopAppearance::Contrast::high || contrastRatio(window, text) > 20.5;
    setGrounds(theme);
    const QColor house = theme.isDark ? QColor(0xff4d5e) : QColor(0xc8102e);
    setAccent(theme, accentOf(desktop, palette).value_or(house),
              theme.isHighContrast ? highTextContrast : textContrast);
    return theme;
}

} // namespace zofra
