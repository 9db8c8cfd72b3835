// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QApplication>
#include <QFont>
#include <QFontDatabase>
#include <QImage>
#include <QLibraryInfo>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <cstdlib>
#include <optional>
#include <string>

namespace zofra::test {

/// The font that pictures are taken with.
inline const QString pictureFontFamily = QStringLiteral("Inter");

[[nodiscard]] inline bool hasPictureFont() {
    return QFontDatabase::families().contains(pictureFontFamily);
}

/// Why pictures taken here cannot be compared with those that are kept; empty when they can.
[[nodiscard]] inline std::string whyNoComparison() {
    if (!hasPictureFont())
        return "skipped: the font Inter is not installed";
    // Another series shapes and rounds text otherwise, and comes with another Inter.
    const auto version = QLibraryInfo::version();
    if (version.majorVersion() != 6 || version.minorVersion() != 4)
        return "skipped: the kept pictures were drawn by Qt 6.4, not by " + version.toString().toStdString();
    return {};
}

/// Fonts for what the first one lacks, so that it does not depend on what else is installed: Hebrew, Chinese
/// and Japanese.
inline const QStringList otherScriptFamilies{QStringLiteral("DejaVu Sans"),
                                             QStringLiteral("WenQuanYi Micro Hei")};

/// Why pictures with other scripts cannot be compared; empty when they can.
[[nodiscard]] inline std::string whyNoOtherScripts() {
    for (const QString& family : otherScriptFamilies) {
        if (!QFontDatabase::families().contains(family))
            return "skipped: the font " + family.toStdString() + " is not installed";
    }
    return {};
}

/// Text of 14 pixels, without the hinting that differs from one set-up to the next.
[[nodiscard]] inline QFont pictureFont(qreal pixels = 14) {
    QFont font(QStringList(pictureFontFamily) + otherScriptFamilies);
    font.setPointSizeF(pixels * 72 / 96);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::PreferAntialias);
    return font;
}

/// The widget as it would look on a screen of this ratio.
[[nodiscard]] inline QImage picture(QWidget& widget, qreal ratio) {
    QImage image((QSizeF(widget.size()) * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::magenta);
    widget.render(&image);
    image.setDevicePixelRatio(1);
    return image.convertToFormat(QImage::Format_RGB32);
}

/// How two pictures differ.
struct PictureDifference {
    /// Pixels of which a channel is off by more than what renderers disagree by.
    qsizetype pixels = 0;
    qsizetype ofPixels = 0;
};

/// Absent when the sizes differ.
[[nodiscard]] inline std::optional<PictureDifference> difference(const QImage& a, const QImage& b) {
    constexpr int channelTolerance = 40;
    if (a.size() != b.size())
        return std::nullopt;
    PictureDifference result;
    result.ofPixels = qsizetype(a.width()) * a.height();
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            if (std::abs(qRed(p) - qRed(q)) > channelTolerance ||
                std::abs(qGreen(p) - qGreen(q)) > channelTolerance ||
                std::abs(qBlue(p) - qBlue(q)) > channelTolerance)
                ++result.pixels;
        }
    }
    return result;
}

/// Whether two pictures are the same but for what renderers disagree by: a changed digit is more than that.
[[nodiscard]] inline bool looksTheSame(const QImage& a, const QImage& b) {
    const auto found = difference(a, b);
    return found && found->pixels * 10000 <= found->ofPixels;
}

} // namespace zofra::test
