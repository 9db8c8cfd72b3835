// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/x11/XServer.h"

#include <QByteArray>
#include <QGuiApplication>

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace zofra {

namespace {

struct Freed {
    void operator()(void* reply) const { std::free(reply); }
};
template<typename Reply>
using Owned = std::unique_ptr<Reply, Freed>;

int defaultScreen() {
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) != 0)
        std::free(host);
    return screen;
}

} // namespace

XServer::XServer(xcb_connection_t* connection, int screen, Ownership ownership)
    : m_connection(connection)
    , m_screen(screen)
    , m_ownership(ownership) {}

XServer::~XServer() {
    // What is in error must be freed this way, too.
    if (m_ownership == Ownership::ours)
        xcb_disconnect(m_connection);
}

std::unique_ptr<XServer> XServer::connect() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return nullptr;
    int screen = 0;
    xcb_connection_t* const connection = xcb_connect(nullptr, &screen);
    std::unique_ptr<XServer> server(new XServer(connection, screen, Ownership::ours));
    return xcb_connection_has_error(connection) == 0 ? std::move(server) : nullptr;
}

std::unique_ptr<XServer> XServer::ofToolkit() {
    const auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    xcb_connection_t* const connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return nullptr;
    return std::unique_ptr<XServer>(new XServer(connection, defaultScreen(), Ownership::toolkits));
}

bool XServer::hasTray() const {
    return isTaken("_NET_SYSTEM_TRAY_S");
}

bool XServer::hasCompositor() const {
    return isTaken("_NET_WM_CM_S");
}

bool XServer::isTaken(const QByteArray& selection) const {
    const auto question =
        xcb_get_selection_owner(m_connection, atom(selection + QByteArray::number(m_screen)));
    const Owned<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(m_connection, question, nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

void XServer::endStartup(const QString& startupId) const {
    // Longer than any desktop makes them.
    constexpr int mostCharacters = 1000;
    if (startupId.isEmpty() || startupId.size() > mostCharacters)
        return;
    // Within the quotes these two would have a meaning of their own.
    QByteArray id = startupId.toUtf8();
    id.replace('\\', "\\\\").replace('"', "\\\"");
    broadcastStartupInfo("remove: ID=\"" + id + '"');
}

void XServer::broadcastStartupInfo(const QByteArray& text) const {
    const xcb_window_t sender = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, sender, root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 8;
    message.window = sender;
    message.type = atom("_NET_STARTUP_INFO_BEGIN");
    // The text in pieces of twenty bytes, the last one ending with a zero.
    constexpr qsizetype pieceSize = sizeof message.data.data8;
    for (qsizetype at = 0; at <= text.size(); at += pieceSize) {
        std::fill(std::begin(message.data.data8), std::end(message.data.data8), '\0');
        const QByteArray piece = text.mid(at, pieceSize);
        std::ranges::copy(piece, std::begin(message.data.data8));
        xcb_send_event(m_connection, 0, root(), XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char*>(&message));
        message.type = atom("_NET_STARTUP_INFO");
    }
    xcb_destroy_window(m_connection, sender);
    // An answer to anything means that all before it has been seen.
    static_cast<void>(atom("_NET_STARTUP_INFO"));
}

xcb_atom_t XServer::atom(const QByteArray& name) const {
    const auto cookie =
        xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.constData());
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

xcb_window_t XServer::root() const {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    for (int i = 0; i < m_screen && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    return screens.data->root;
}

} // namespace zofra
