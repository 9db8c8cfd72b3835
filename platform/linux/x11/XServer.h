// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <memory>
#include <xcb/xcb.h>

namespace zofra {

/// A connection to an X server. Everything here waits for the server, for a millisecond or so. One thread at
/// a time.
class XServer final {
public:
    /// The one of $DISPLAY; absent unless it answers and lets this program in. Closed with the object.
    [[nodiscard]] static std::unique_ptr<XServer> connect();
    /// The toolkit's own connection; absent where it uses none.
    [[nodiscard]] static std::unique_ptr<XServer> ofToolkit();
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    /// Whether there is a tray of the old kind (XEmbed) now.
    [[nodiscard]] bool hasTray() const;
    /// Whether somebody puts windows together, so that they can be seen through in places.
    [[nodiscard]] bool hasCompositor() const;
    /// Tells the desktop that what it has started is up, though no window was shown: else its busy pointer
    /// would turn for many seconds. An empty id is none.
    void endStartup(const QString& startupId) const;

private:
    enum class Ownership { ours, toolkits };
    XServer(xcb_connection_t* connection, int screen, Ownership ownership);

    /// Whether somebody has taken `selection` of this screen.
    [[nodiscard]] bool isTaken(const QByteArray& selection) const;
    [[nodiscard]] xcb_atom_t atom(const QByteArray& name) const;
    [[nodiscard]] xcb_window_t root() const;
    void broadcastStartupInfo(const QByteArray& text) const;

    xcb_connection_t* m_connection;
    /// The display's default screen.
    int m_screen;
    Ownership m_ownership;
};

} // namespace zofra
