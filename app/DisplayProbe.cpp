// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DisplayProbe.h"

#include <QDir>
#include <QLibraryInfo>

#include <dlfcn.h>
#include <memory>

namespace zofra {

namespace {

struct LibraryCloser {
    void operator()(void* handle) const { dlclose(handle); }
};
using Library = std::unique_ptr<void, LibraryCloser>;

template<typename Function>
Function* symbol(const Library& library, const char* name) {
    return library ? reinterpret_cast<Function*>(dlsym(library.get(), name)) : nullptr;
}

/// Whether an X server answers and lets this program in. The toolkit brings the library, so nothing links it.
bool x11Answers() {
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return false;
    const Library library(dlopen("libxcb.so.1", RTLD_LAZY | RTLD_LOCAL));
    const auto connect = symbol<void*(const char*, int*)>(library, "xcb_connect");
    const auto hasError = symbol<int(void*)>(library, "xcb_connection_has_error");
    const auto disconnect = symbol<void(void*)>(library, "xcb_disconnect");
    if (!connect || !hasError || !disconnect)
        return false;
    void* connection = connect(nullptr, nullptr);
    const bool answers = connection && hasError(connection) == 0;
    // Also a connection in error is freed this way.
    if (connection)
        disconnect(connection);
    return answers;
}

bool waylandAnswers() {
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return false;
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/platforms"));
    if (plugins.entryList({QStringLiteral("libqwayland*.so")}, QDir::Files).isEmpty())
        return false;
    const Library library(dlopen("libwayland-client.so.0", RTLD_LAZY | RTLD_LOCAL));
    const auto connect = symbol<void*(const char*)>(library, "wl_display_connect");
    const auto disconnect = symbol<void(void*)>(library, "wl_display_disconnect");
    if (!connect || !disconnect)
        return false;
    void* display = connect(nullptr);
    if (display)
        disconnect(display);
    return display != nullptr;
}

} // namespace

std::optional<QString> usableDisplay() {
    const QString chosen = qEnvironmentVariable("QT_QPA_PLATFORM");
    if (!chosen.isEmpty()) {
        if (chosen.startsWith(QLatin1String("xcb")) && !chosen.contains(QLatin1Char(';')))
            return x11Answers() ? std::optional(chosen) : std::nullopt;
        if (chosen.startsWith(QLatin1String("wayland")) && !chosen.contains(QLatin1Char(';')))
            return waylandAnswers() ? std::optional(chosen) : std::nullopt;
        return chosen;
    }
    // Without decorations from the compositor the toolkit's windows look foreign there.
    const bool isGnome = qEnvironmentVariable("XDG_CURRENT_DESKTOP").contains(QLatin1String("GNOME"));
    if (!isGnome && waylandAnswers())
        return QStringLiteral("wayland");
    if (x11Answers())
        return QStringLiteral("xcb");
    if (isGnome && waylandAnswers())
        return QStringLiteral("wayland");
    return std::nullopt;
}

} // namespace zofra
