// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DisplayProbe.h"

#include <QDir>
#include <QLibraryInfo>

#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <string_view>

namespace zofra {

namespace {

using Connection = std::shared_ptr<void>;

/// A library that the toolkit brings with it, so that nothing needs to link it. Stays loaded.
class Library {
public:
    explicit Library(const char* name)
        : m_handle(dlopen(name, RTLD_LAZY | RTLD_LOCAL)) {}
    template<typename Function>
    [[nodiscard]] Function* function(const char* name) const {
        return m_handle ? reinterpret_cast<Function*>(dlsym(m_handle, name)) : nullptr;
    }

private:
    void* m_handle;
};

/// Null unless an X server answers and lets this program in.
Connection connectX11() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return nullptr;
    const Library library("libxcb.so.1");
    auto* const connect = library.function<void*(const char*, int*)>("xcb_connect");
    auto* const hasError = library.function<int(void*)>("xcb_connection_has_error");
    auto* const disconnect = library.function<void(void*)>("xcb_disconnect");
    if (!connect || !hasError || !disconnect)
        return nullptr;
    // What is in error must be freed this way, too.
    const Connection connection(connect(nullptr, nullptr), [disconnect](void* opened) {
        if (opened)
            disconnect(opened);
    });
    return connection && hasError(connection.get()) == 0 ? connection : nullptr;
}

Connection connectWayland() {
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return nullptr;
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    if (plugins.entryList({QStringLiteral("libqwayland*.so")}, QDir::Files).isEmpty())
        return nullptr;
    const Library library("libwayland-client.so.0");
    auto* const connect = library.function<void*(const char*)>("wl_display_connect");
    auto* const disconnect = library.function<void(void*)>("wl_display_disconnect");
    if (!connect || !disconnect)
        return nullptr;
    return Connection(connect(nullptr), [disconnect](void* opened) {
        if (opened)
            disconnect(opened);
    });
}

std::optional<UsableDisplay> onlyWith(const QString& platform, const Connection& connection) {
    if (!connection)
        return std::nullopt;
    return UsableDisplay{platform, connection};
}

std::optional<UsableDisplay> chosenByUser(const QString& platform) {
    const bool isOne = !platform.contains(QLatin1Char(';'));
    if (isOne && platform.startsWith(QLatin1String("xcb")))
        return onlyWith(platform, connectX11());
    if (isOne && platform.startsWith(QLatin1String("wayland")))
        return onlyWith(platform, connectWayland());
    return UsableDisplay{platform, nullptr};
}

} // namespace

std::optional<UsableDisplay> usableDisplay() {
    const QString chosen = qEnvironmentVariable("QT_QPA_PLATFORM");
    if (!chosen.isEmpty())
        return chosenByUser(chosen);
    const QString x11 = QStringLiteral("xcb");
    const QString wayland = QStringLiteral("wayland");
    // There the compositor leaves window frames to the programs, and the toolkit's look foreign.
    const bool isGnome = qEnvironmentVariable("XDG_CURRENT_DESKTOP").contains(QLatin1String("GNOME"));
    if (isGnome) {
        const auto display = onlyWith(x11, connectX11());
        return display ? display : onlyWith(wayland, connectWayland());
    }
    const auto display = onlyWith(wayland, connectWayland());
    return display ? display : onlyWith(x11, connectX11());
}

bool hasOldStyleTray() {
    // As they travel to and from the server.
    struct Cookie {
        unsigned int sequence;
    };
    struct Reply {
        std::uint8_t type;
        std::uint8_t pad;
        std::uint16_t sequence;
        std::uint32_t length;
        std::uint32_t value;
    };
    const Connection connection = connectX11();
    const Library library("libxcb.so.1");
    auto* const askAtom =
        library.function<Cookie(void*, std::uint8_t, std::uint16_t, const char*)>("xcb_intern_atom");
    auto* const atomReply = library.function<Reply*(void*, Cookie, void**)>("xcb_intern_atom_reply");
    auto* const askOwner = library.function<Cookie(void*, std::uint32_t)>("xcb_get_selection_owner");
    auto* const ownerReply = library.function<Reply*(void*, Cookie, void**)>("xcb_get_selection_owner_reply");
    if (!connection || !askAtom || !atomReply || !askOwner || !ownerReply)
        return false;
    using Answer = std::unique_ptr<Reply, decltype(&std::free)>;
    constexpr std::string_view name = "_NET_SYSTEM_TRAY_S0";
    void* const server = connection.get();
    const Answer atom(atomReply(server, askAtom(server, 0, name.size(), name.data()), nullptr), &std::free);
    if (!atom || atom->value == 0)
        return false;
    const Answer owner(ownerReply(server, askOwner(server, atom->value), nullptr), &std::free);
    return owner && owner->value != 0;
}

} // namespace zofra
