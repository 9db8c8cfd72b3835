// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/DBusArguments.h"
#include "platform/linux/DBusExportedObject.h"

#include <QDBusObjectPath>
#include <QString>

#include <functional>
#include <vector>

namespace zofra {

/// (oss): what can be played, as a media player tells it.
struct MprisPlaylist {
    QDBusObjectPath id;
    QString name;
    QString icon;

    static constexpr std::tuple members{&MprisPlaylist::id, &MprisPlaylist::name, &MprisPlaylist::icon};
    friend bool operator==(const MprisPlaylist&, const MprisPlaylist&) = default;
};

/// (b(oss)): what is being played, if anything.
struct MprisMaybePlaylist {
    bool isThere = false;
    MprisPlaylist playlist{QDBusObjectPath(QStringLiteral("/")), {}, {}};

    static constexpr std::tuple members{&MprisMaybePlaylist::isThere, &MprisMaybePlaylist::playlist};
    friend bool operator==(const MprisMaybePlaylist&, const MprisMaybePlaylist&) = default;
};

/// The lists of a media player (org.mpris.MediaPlayer2.Playlists): each stands for one source of sound. Main
/// thread only.
class MprisPlaylists final {
public:
    /// `key` is made of letters, digits and underscores.
    struct Entry {
        QString key;
        QString name;
    };

    void setEntries(const std::vector<Entry>& entries, const QString& icon);
    void setActive(const QString& key);
    /// The entry before or after the active one, in their order and round; empty when there is none.
    [[nodiscard]] QString neighbour(int distance) const;

    /// A client has chosen one.
    std::function<void(const QString& key)> onChosen;

    /// Refers to this object.
    [[nodiscard]] dbus::Interface interface();

private:
    [[nodiscard]] dbus::Answer activate(const QDBusObjectPath& id) const;
    [[nodiscard]] dbus::Answer list(const QVariantList& arguments) const;

    std::vector<Entry> m_entries;
    QList<MprisPlaylist> m_playlists;
    MprisMaybePlaylist m_active;
};

} // namespace zofra
