// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StartupNotice.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <memory>

namespace zofra {

namespace {

// As the protocol has them; the library's headers are not needed for so little.
struct Request {
    unsigned sequence;
};
struct AtomReply {
    std::uint8_t responseType;
    std::uint8_t pad;
    std::uint16_t sequence;
    std::uint32_t length;
    std::uint32_t atom;
};
struct ScreenIterator {
    const std::uint32_t* screen; // begins with its root window
    int remaining;
    int index;
};
struct ClientMessage {
    std::uint8_t responseType = 33;
    std::uint8_t format = 8;
    std::uint16_t sequence = 0;
    std::uint32_t window = 0;
    std::uint32_t type = 0;
    std::array<char, 20> data{};
};
static_assert(sizeof(ClientMessage) == 32);

constexpr std::uint32_t propertyChangeMask = 1U << 22U;
constexpr std::uint16_t inputOnly = 2;

/// A connection to the X server through the library that the toolkit brings with it.
class XConnection {
public:
    XConnection()
        : m_library(dlopen("libxcb.so.1", RTLD_LAZY | RTLD_LOCAL)) {
        auto* const connect = function<void*(const char*, int*)>("xcb_connect");
        if (connect)
            m_connection = connect(nullptr, nullptr);
    }
    ~XConnection() {
        if (m_connection)
            function<void(void*)>("xcb_disconnect")(m_connection);
    }
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    [[nodiscard]] bool isUsable() const {
        return m_connection && function<int(void*)>("xcb_connection_has_error")(m_connection) == 0;
    }

    /// To whoever watches the screen: `text` in pieces of twenty bytes, the last one ending with a zero.
    void broadcast(const QByteArray& text) {
        const auto setup = function<const void*(void*)>("xcb_get_setup")(m_connection);
        const std::uint32_t root =
            *function<ScreenIterator(const void*)>("xcb_setup_roots_iterator")(setup).screen;
        ClientMessage message;
        message.window = function<std::uint32_t(void*)>("xcb_generate_id")(m_connection);
        function<Request(void*, std::uint8_t, std::uint32_t, std::uint32_t, std::int16_t, std::int16_t,
                         std::uint16_t, std::uint16_t, std::uint16_t, std::uint16_t, std::uint32_t,
                         std::uint32_t, const void*)>("xcb_create_window")(
            m_connection, 0, message.window, root, -1, -1, 1, 1, 0, inputOnly, 0, 0, nullptr);
        message.type = atom("_NET_STARTUP_INFO_BEGIN");
        const std::uint32_t next = atom("_NET_STARTUP_INFO");
        const auto send = function<Request(void*, std::uint8_t, std::uint32_t, std::uint32_t, const char*)>(
            "xcb_send_event");
        for (qsizetype at = 0; at <= text.size(); at += qsizetype(message.data.size())) {
            const QByteArray piece = text.mid(at, qsizetype(message.data.size()));
            message.data.fill('\0');
            std::memcpy(message.data.data(), piece.constData(), std::size_t(piece.size()));
            send(m_connection, 0, root, propertyChangeMask, reinterpret_cast<const char*>(&message));
            message.type = next;
        }
        // An answer to anything means that all before it has been seen.
        static_cast<void>(atom("_NET_STARTUP_INFO"));
    }

private:
    template<typename Function>
    [[nodiscard]] Function* function(const char* name) const {
        return m_library ? reinterpret_cast<Function*>(dlsym(m_library, name)) : nullptr;
    }

    [[nodiscard]] std::uint32_t atom(const char* name) const {
        const auto request = function<Request(void*, std::uint8_t, std::uint16_t, const char*)>(
            "xcb_intern_atom")(m_connection, 0, std::uint16_t(std::strlen(name)), name);
        const std::unique_ptr<AtomReply, decltype(&std::free)> reply(
            function<AtomReply*(void*, Request, void**)>("xcb_intern_atom_reply")(m_connection, request,
                                                                                  nullptr),
            &std::free);
        return reply ? reply->atom : 0;
    }

    void* m_library = nullptr;
    void* m_connection = nullptr;
};

} // namespace

Activation takeActivation() {
    Activation activation = Activation::fromEnvironment();
    qunsetenv("DESKTOP_STARTUP_ID");
    qunsetenv("XDG_ACTIVATION_TOKEN");
    return activation;
}

void endStartup(const QString& startupId) {
    // Longer than any desktop makes them.
    constexpr int mostCharacters = 1000;
    if (startupId.isEmpty() || startupId.size() > mostCharacters)
        return;
    // Within the quotes these two would have a meaning of their own.
    QByteArray id = startupId.toUtf8();
    id.replace('\\', "\\\\").replace('"', "\\\"");
    XConnection connection;
    if (connection.isUsable())
        connection.broadcast("remove: ID=\"" + id + '"');
}

} // namespace zofra
