// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DisplayProbe.h"

#include "platform/linux/x11/XServer.h"

#include <QDir>
#include <QLibraryInfo>

#include <dlfcn.h>

namespace zofra {

namespace {

using Connection = std::shared_ptr<void>;

Connection connectWayland() {
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return nullptr;
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/platforms"_qs);
    if (plugins.entryList({u"libqwayland*.so"_qs}, QDir::Files).isEmpty())
        return nullptr;
    // A library that the toolkit brings with it, so that nothing needs to link it. Stays loaded.
    void* const library = dlopen("libwayland-client.so.0", RTLD_LAZY | RTLD_LOCAL);
    if (!library)
        return nullptr;
    auto* const connect = reinterpret_cast<void* (*)(const char*)>(dlsym(library, "wl_display_connect"));
    auto* const disconnect = reinterpret_cast<void (*)(void*)>(dlsym(library, "wl_display_disconnect"));
    if (!connect || !disconnect)
        return nullptr;
    return Connection(connect(nullptr), [disconnect](void* opened) {
        if (opened)
            disconnect(opened);
    });
}

std::optional<UsableDisplay> onlyWith(const QString& platform, const Connection& connection) {
    return connection ? std::optional(UsableDisplay{platform, connection}) : std::nullopt;
}

std::optional<UsableDisplay> chosenByUser(const QString& platform) {
    const bool isOne = !platform.contains(u';');
    if (isOne && platform.startsWith(u"xcb"))
        return onlyWith(platform, XServer::connect());
    if (isOne && platform.startsWith(u"wayland"))
        return onlyWith(platform, connectWayland());
    return UsableDisplay{platform, nullptr};
}

} // namespace

std::optional<UsableDisplay> usableDisplay() {
    const QString chosen = qEnvironmentVariable("QT_QPA_PLATFORM");
    if (!chosen.isEmpty())
        return chosenByUser(chosen);
    const auto x11 = [] { return onlyWith(u"xcb"_qs, XServer::connect()); };
    const auto wayland = [] { return onlyWith(u"wayland"_qs, connectWayland()); };
    // On GNOME the compositor leaves window frames to the programs, and the toolkit's look foreign.
    const bool isGnome = qEnvironmentVariable("XDG_CURRENT_DESKTOP").contains(u"GNOME");
    const auto first = isGnome ? x11() : wayland();
    return first ? first : isGnome ? wayland() : x11();
}

} // namespace zofra
