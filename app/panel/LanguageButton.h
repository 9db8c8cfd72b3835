// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"
#include "stations/AppLanguage.h"
#include "stations/texts/InterfaceTexts.h"

#include <QEasingCurve>
#include <QVariantAnimation>

namespace zofra {

/// The flag of one language: one of a group, of which one is current, chosen and walked through with the
/// arrow keys as well. The mark of the current language fades in and out, slowly at both ends.
class LanguageButton final : public PanelButton {
public:
    LanguageButton(const PanelLook& look, AppLanguage language, QWidget* parent)
        : PanelButton(look, Style(), parent)
        , m_language(language) {
        setCheckable(true);
        setAutoExclusive(true);
        setAccessibleName(texts::languageName.in(language));
        setHelp(accessibleName());
        m_fade.setDuration(fadeMilliseconds);
        m_fade.setEasingCurve(easeInOut());
        connect(&m_fade, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
            m_mark = value.toReal();
            update();
        });
    }

    [[nodiscard]] AppLanguage language() const { return m_language; }

    enum class Change { fades, atOnce };
    void setCurrent(bool isCurrent, Change change) {
        const qreal goal = isCurrent ? 1 : 0;
        // The others of the group are unchecked by it.
        if (isCurrent)
            setChecked(true);
        if (m_fade.state() == QAbstractAnimation::Running ? m_fade.endValue() == goal : m_mark == goal)
            return;
        m_fade.stop();
        if (change == Change::fades && animates() && isVisible()) {
            m_fade.setStartValue(m_mark);
            m_fade.setEndValue(goal);
            m_fade.start();
        } else {
            m_mark = goal;
            update();
        }
    }
    /// How much of the mark is drawn, 0 to 1.
    [[nodiscard]] qreal mark() const { return m_mark; }
    [[nodiscard]] const QVariantAnimation& fade() const { return m_fade; }

protected:
    [[nodiscard]] QSize bodySize() const override { return {look().metrics.px(40), look().metrics.px(30)}; }
    void paintBody(QPainter& painter, const QRect& body) override {
        const PanelTheme& theme = look().theme;
        const PanelMetrics& metrics = look().metrics;
        if (m_mark > 0) {
            fillRounded(painter, body, radius(), mixed(theme.accentText, theme.window, 0.16 * m_mark));
            QColor line = theme.accentText;
            line.setAlphaF(static_cast<float>(m_mark));
            strokeRounded(painter, body, radius(), line, metrics.scaled(theme.isHighContrast ? 2.5 : 1.5));
        } else if (underMouse() || isDown()) {
            fillRounded(painter, body, radius(), groundUnderPointer());
        }
        const QSize size(metrics.px(24), metrics.px(16));
        const QRect flag(
            QPoint(body.center().x() - (size.width() - 1) / 2, body.center().y() - (size.height() - 1) / 2),
            size);
        const qreal ratio = painter.paintEngine()->paintDevice()->devicePixelRatioF();
        QBrush cloth(IconSet::pixmap(QLatin1String("flag-") + rawValue(m_language), size, ratio, theme.text));
        painter.save();
        painter.translate(flag.topLeft());
        painter.setPen(Qt::NoPen);
        painter.setBrush(cloth);
        painter.drawRoundedRect(QRectF({}, QSizeF(size)), metrics.scaled(3), metrics.scaled(3));
        painter.restore();
        // White stripes need an edge on a light ground, black ones on a dark ground.
        QColor hem = theme.text;
        hem.setAlphaF(0.12F);
        strokeRounded(painter, flag, metrics.scaled(3), hem, 1);
    }
    // Which language is current is said by the language manager, not by the click.
    void nextCheckState() override {}

private:
    static constexpr int fadeMilliseconds = 150;

    static QEasingCurve easeInOut() {
        QEasingCurve curve(QEasingCurve::BezierSpline);
        curve.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
        return curve;
    }

    AppLanguage m_language;
    qreal m_mark = 0;
    QVariantAnimation m_fade;
};

} // namespace zofra
