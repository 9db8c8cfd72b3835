// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/tray/XEmbedIcon.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QWheelEvent>

#include <cstdlib>
#include <memory>
#include <utility>
#include <xcb/xcb.h>

namespace zofra {

namespace {

struct Freed {
    void operator()(void* reply) const { std::free(reply); }
};
template<typename Reply>
using Owned = std::unique_ptr<Reply, Freed>;

/// Which of the display's screens is the default one.
int defaultScreen() {
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) != 0)
        std::free(host);
    return screen;
}

} // namespace

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
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* const connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return false;
    const QByteArray name = "_NET_SYSTEM_TRAY_S" + QByteArray::number(defaultScreen());
    const auto atomCookie =
        xcb_intern_atom(connection, 1, static_cast<std::uint16_t>(name.size()), name.constData());
    const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection, atomCookie, nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE)
        return false;
    const auto ownerCookie = xcb_get_selection_owner(connection, atom->atom);
    const Owned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, ownerCookie, nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
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
