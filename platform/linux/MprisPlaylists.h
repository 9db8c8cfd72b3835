// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/DBusArguments.h"
#include "platform/linux/DBusExportedObject.h"

#include <QDBusObjectPath>
#include <QString>
#include <QStringList>

#include <algorithm>
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
    MprisPlaylist playlist{QDBusObjectPath(u"/"_qs), {}, {}};

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

    void setEntries(const std::vector<Entry>& entries, const QString& icon) {
        m_entries = entries;
        m_playlists.clear();
        for (const Entry& entry : entries)
            m_playlists.append({pathOf(entry.key), entry.name, icon});
    }
    void setActive(const QString& key) {
        const auto active = std::ranges::find(m_playlists, pathOf(key), &MprisPlaylist::id);
        m_active = active == m_playlists.end() ? MprisMaybePlaylist() : MprisMaybePlaylist{true, *active};
    }
    /// The entry before or after the active one, in their order and round; empty when there is none.
    [[nodiscard]] QString neighbour(int distance) const {
        const auto count = static_cast<int>(m_playlists.size());
        const auto active = static_cast<int>(m_playlists.indexOf(m_active.playlist));
        if (active < 0)
            return {};
        return m_entries[static_cast<std::size_t>(((active + distance) % count + count) % count)].key;
    }

    /// A client has chosen one.
    std::function<void(const QString& key)> onChosen;

    /// Refers to this object.
    [[nodiscard]] dbus::Interface interface() {
        dbus::registerTypes<MprisPlaylist, QList<MprisPlaylist>, MprisMaybePlaylist>();
        const auto activate = [this](const QVariantList& arguments) {
            return this->activate(qvariant_cast<QDBusObjectPath>(arguments.at(0)));
        };
        const auto list = [this](const QVariantList& arguments) { return this->list(arguments); };
        return {"org.mpris.MediaPlayer2.Playlists",
                {{"ActivatePlaylist", "PlaylistId:o", "", activate},
                 {"GetPlaylists", "Index:u MaxCount:u Order:s ReverseOrder:b", "Playlists:a(oss)", list}},
                {{"PlaylistChanged", "Playlist:(oss)"}},
                {{"PlaylistCount", "u", [this] { return QVariant(static_cast<uint>(m_playlists.size())); }},
                 dbus::constant("Orderings", "as", QStringList{u"UserDefined"_qs, u"Alphabetical"_qs}),
                 {"ActivePlaylist", "(b(oss))", [this] { return QVariant::fromValue(m_active); }}}};
    }

private:
    static QDBusObjectPath pathOf(const QString& key) {
        return QDBusObjectPath(u"/be/zofra/ZofraZofra/playlist/"_qs + key);
    }
    [[nodiscard]] dbus::Answer activate(const QDBusObjectPath& id) const {
        for (const Entry& entry : m_entries) {
            if (pathOf(entry.key) != id)
                continue;
            const auto chosen = onChosen;
            if (chosen)
                chosen(entry.key);
            return {};
        }
        return dbus::refused("InvalidArgs", u"There is no such playlist"_qs);
    }
    [[nodiscard]] dbus::Answer list(const QVariantList& arguments) const {
        auto all = m_playlists;
        if (arguments.at(2).toString() == u"Alphabetical")
            std::ranges::sort(all, [](const MprisPlaylist& a, const MprisPlaylist& b) {
                return a.name.compare(b.name, Qt::CaseInsensitive) < 0;
            });
        if (arguments.at(3).toBool())
            std::ranges::reverse(all);
        const auto count = static_cast<uint>(all.size());
        const uint first = std::min(arguments.at(0).toUInt(), count);
        const uint most = std::min(arguments.at(1).toUInt(), count - first);
        return {{QVariant::fromValue(all.mid(first, most))}};
    }

    std::vector<Entry> m_entries;
    QList<MprisPlaylist> m_playlists;
    MprisMaybePlaylist m_active;
};

} // namespace zofra
