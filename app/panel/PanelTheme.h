// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QPalette>

#include <optional>

namespace zofra {

/// What the desktop says about how programs should look. Everything may be unsaid.
struct DesktopAppearance {
    enum class ColorScheme { unsaid, dark, light };
    enum class Contrast { normal, high };

    ColorScheme colorScheme = ColorScheme::unsaid;
    Contrast contrast = Contrast::normal;
    std::optional<QColor> accent;

    friend bool operator==(const DesktopAppearance&, const DesktopAppearance&) = default;
};

/// The panel's colours. Text reads at 4.5:1 or more on everything it stands on, drawings at 3:1 or more.
struct PanelTheme {
    bool isDark = false;
    bool isHighContrast = false;

    QColor window;
    QColor card;
    /// Borders, which only group.
    QColor line;
    /// Lines and surfaces that show where something is: a box, the slider's track.
    QColor mark;
    QColor text;
    QColor dim;
    /// Surfaces in the accent colour, and what is written on them.
    QColor accent;
    QColor onAccent;
    /// The accent colour for text, drawings and rings on `window` and `card`.
    QColor accentText;
    QColor hover;
    QColor pressed;

    friend bool operator==(const PanelTheme&, const PanelTheme&) = default;

    /// The accent's surface while it is touched, `shade` (0..1) of the way away from what is written on it.
    [[nodiscard]] QColor shadedAccent(double shade) const;

    /// The ground of the menu line that is gone to, or pressed.
    [[nodiscard]] QColor menuMark(bool isPressed) const;

    /// The desktop's word first, then the palette's, then the house's own red.
    [[nodiscard]] static PanelTheme make(const DesktopAppearance& desktop, const QPalette& palette);
};

/// Contrast ratio of two opaque colours as WCAG counts it, 1 to 21.
[[nodiscard]] double contrastRatio(const QColor& a, const QColor& b);

/// `top` at `share` (0..1) over `bottom`, opaque.
[[nodiscard]] QColor mixed(const QColor& top, const QColor& bottom, double share);

} // namespace zofra
