// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StatusItem.h"
#include "platform/linux/x11/XServer.h"

#include <QSystemTrayIcon>
#include <QWheelEvent>

#include <functional>
#include <utility>

namespace zofra {

/// An icon in X11's old tray. The class below keeps its first answer about trays for ever. Main thread only.
class XEmbedIcon final : public QSystemTrayIcon {
public:
    struct Handlers {
        std::function<void(ButtonEvent)> clicked;
        std::function<void()> secondaryActivate;
        std::function<void(int delta)> scroll;
    };
    explicit XEmbedIcon(Handlers handlers)
        : m_handlers(std::move(handlers)) {
        connect(this, &QSystemTrayIcon::activated, this, [this](ActivationReason reason) {
            if (reason == Trigger || reason == DoubleClick)
                m_handlers.clicked(ButtonEvent::leftMouseUp);
            else if (reason == Context)
                m_handlers.clicked(ButtonEvent::rightMouseUp);
            else if (reason == MiddleClick)
                m_handlers.secondaryActivate();
        });
    }

    /// Whether there is such a tray now. The toolkit's own answer would look at the message bus first, and
    /// wait for it.
    [[nodiscard]] static bool isAvailable() {
        const auto server = XServer::ofToolkit();
        return server && server->hasTray();
    }

protected:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::Wheel)
            return QSystemTrayIcon::event(event);
        const int delta = static_cast<QWheelEvent*>(event)->angleDelta().y();
        if (delta != 0)
            m_handlers.scroll(delta);
        return true;
    }

private:
    Handlers m_handlers;
};

} // namespace zofra
