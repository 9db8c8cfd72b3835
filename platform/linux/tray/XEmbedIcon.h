// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusItem.h"

#include <QSystemTrayIcon>

#include <functional>

namespace zofra {

/// An icon in X11's old tray. The class below keeps its first answer about trays for ever. Main thread only.
class XEmbedIcon final : public QSystemTrayIcon {
public:
    struct Handlers {
        std::function<void(ButtonEvent)> clicked;
        std::function<void()> secondaryActivate;
        std::function<void(int delta)> scroll;
    };
    explicit XEmbedIcon(Handlers handlers);

    /// Whether there is such a tray now.
    [[nodiscard]] static bool isAvailable();

protected:
    bool event(QEvent* event) override;

private:
    Handlers m_handlers;
};

} // namespace zofra
