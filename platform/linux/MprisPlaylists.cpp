// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/MprisPlaylists.h"

#include <QStringList>

#include <algorithm>

namespace zofra {
namespace {

QDBusObjectPath pathOf(const QString& key) {
    return QDBusObjectPath(QStringLiteral("/be/zofra/ZofraZofra/playlist/") + key);
}

} // namespace

void MprisPlaylists::setEntries(const std::vector<Entry>& entries, const QString& icon) {
    m_entries = entries;
    m_playlists.clear();
    for (const Entry& entry : entries)
        m_playlists.append({pathOf(entry.key), entry.name, icon});
}

void MprisPlaylists::setActive(const QString& key) {
    const auto active = std::find_if(m_playlists.begin(), m_playlists.end(),
                                     [id = pathOf(key)](const auto& one) { return one.id == id; });
    m_active = active == m_playlists.end() ? MprisMaybePlaylist() : MprisMaybePlaylist{true, *active};
}

QString MprisPlaylists::neighbour(int distance) const {
    const auto count = static_cast<int>(m_playlists.size());
    const auto active = static_cast<int>(m_playlists.indexOf(m_active.playlist));
    if (active < 0)
        return {};
    return m_entries[static_cast<std::size_t>(((active + distance) % count + count) % count)].key;
}

dbus::Answer MprisPlaylists::activate(const QDBusObjectPath& id) const {
    for (const Entry& entry : m_entries) {
        if (pathOf(entry.key) != id)
            continue;
        const auto chosen = onChosen;
        if (chosen)
            chosen(entry.key);
        return {};
    }
    return dbus::refused("InvalidArgs", QStringLiteral("There is no such playlist"));
}

dbus::Answer MprisPlaylists::list(const QVariantList& arguments) const {
    auto all = m_playlists;
    if (arguments.at(2).toString() == QLatin1String("Alphabetical"))
        std::sort(all.begin(), all.end(), [](const MprisPlaylist& a, const MprisPlaylist& b) {
            return a.name.compare(b.name, Qt::CaseInsensitive) < 0;
        });
    if (arguments.at(3).toBool())
        std::reverse(all.begin(), all.end());
    const auto count = static_cast<uint>(all.size());
    const uint first = std::min(arguments.at(0).toUInt(), count);
    const uint most = std::min(arguments.at(1).toUInt(), count - first);
    return {{QVariant::fromValue(all.mid(first, most))}, {}, {}};
}

dbus::Interface MprisPlaylists::interface() {
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
             dbus::constant("Orderings", "as",
                            QStringList{QStringLiteral("UserDefined"), QStringLiteral("Alphabetical")}),
             {"ActivePlaylist", "(b(oss))", [this] { return QVariant::fromValue(m_active); }}}};
}

} // namespace zofra
