// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/PanelButton.h"
#include "stations/AppLanguage.h"

#include <QVariantAnimation>

namespace zofra {

/// The flag of one language: one of a group, of which one is current, chosen and walked through with the
/// arrow keys as well. The mark of the current language fades in and out, slowly at both ends.
class LanguageButton final : public PanelButton {
public:
    LanguageButton(const PanelLook& look, AppLanguage language, QWidget* parent);

    [[nodiscard]] AppLanguage language() const { return m_language; }

    enum class Change { fades, atOnce };
    void setCurrent(bool isCurrent, Change change);
    /// How much of the mark is drawn, 0 to 1.
    [[nodiscard]] qreal mark() const { return m_mark; }
    [[nodiscard]] const QVariantAnimation& fade() const { return m_fade; }

protected:
    [[nodiscard]] QSize bodySize() const override;
    void paintBody(QPainter& painter, const QRect& body) override;
    // Which language is current is said by the language manager, not by the click.
    void nextCheckState() override {}

private:
    AppLanguage m_language;
    qreal m_mark = 0;
    QVariantAnimation m_fade;
};

} // namespace zofra
