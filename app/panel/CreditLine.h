// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panel/TextButton.h"
#include "stations/AppLanguage.h"

#include <QWidget>

namespace zofra {

/// Who made this, and a link to write to them, which goes to a line of its own where one is too short.
class CreditLine final : public QWidget {
public:
    CreditLine(const PanelLook& look, QWidget* parent);

    void setLanguage(AppLanguage language);
    [[nodiscard]] LinkButton* link() const { return m_link; }

    [[nodiscard]] QSize sizeHint() const override {
        return {minimumSizeHint().width(), heightForWidth(width())};
    }
    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;

protected:
    void resizeEvent(QResizeEvent*) override { place(); }
    void paintEvent(QPaintEvent* event) override;

private:
    /// The text's own, without the room for rings.
    [[nodiscard]] int textWidth() const;
    [[nodiscard]] bool fitsOneLine(int width) const;
    void place();

    const PanelLook& m_look;
    QString m_text;
    LinkButton* m_link;
};

} // namespace zofra
