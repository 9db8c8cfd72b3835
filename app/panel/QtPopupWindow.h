// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/PopupWindow.h"
#include "app/panel/AboutPopupView.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <vector>

namespace zofra {

/// Makes popup windows as ordinary top-level windows, on X11 and on Wayland.
class QtPopupWindowFactory final : public PopupWindowFactory {
public:
    explicit QtPopupWindowFactory(const PanelEnvironment& environment)
        : m_environment(environment) {}

    [[nodiscard]] std::unique_ptr<PopupWindow> makeWindow(PopupPanelContent content) override;

    /// What the first window would wait for (fonts, drawings, what the toolkit does once), done beforehand,
    /// so that it appears within a frame too. Some 25 ms of work in steps of a few, each for an idle moment
    /// after the start and in their order; they may be left out. Nothing is shown.
    [[nodiscard]] std::vector<std::function<void()>> preparation(const PopupPanelContent& content) const;

    /// The token with which whoever asked for the window (a second start, a click in a panel) passes on the
    /// right to the keyboard. Used up by the next `makeKeyAndOrderFront`; an empty one is none.
    void setActivationToken(QByteArray token) { *m_token = std::move(token); }

private:
    PanelEnvironment m_environment;
    std::shared_ptr<QByteArray> m_token = std::make_shared<QByteArray>();
};

} // namespace zofra
