// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/XEmbedIcon.h"

#include "platform/linux/x11/XServer.h"

#include <QWheelEvent>

#include <utility>

namespace zofra {

XEmbedIcon::XEmbedIcon(Handlers handlers)
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

bool XEmbedIcon::isAvailable() {
    // The toolkit's own answer would look at the message bus first, and wait for it.
    const auto server = XServer::ofToolkit();
    return server && server->hasTray();
}

bool XEmbedIcon::event(QEvent* event) {
    if (event->type() == QEvent::Wheel) {
        const int delta = static_cast<QWheelEvent*>(event)->angleDelta().y();
        if (delta != 0)
            m_handlers.scroll(delta);
        return true;
    }
    return QSystemTrayIcon::event(event);
}

} // namespace zofra
