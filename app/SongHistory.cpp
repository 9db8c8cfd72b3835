// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SongHistory.h"

#include "platform/ForeignText.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <algorithm>

namespace zofra {

namespace {

/// No song has a longer name.
constexpr qsizetype maxSongCharacters = 1000;

QString titleOf(const QString& rawStation) {
    const auto station = RadioStation::fromRawValue(rawStation);
    return station ? station->displayName() : rawStation;
}

} // namespace

std::optional<QString> songHeard(const RadioState& state) {
    // A station of which nothing else is known is shown with its own name.
    const bool isKnown = !state.isLoading && !state.currentSong.trimmed().isEmpty() &&
                         state.currentSong != state.station.displayName();
    return state.isPlaying && isKnown ? std::optional(state.currentSong) : std::nullopt;
}

SongHistory::SongHistory(const QByteArray& json) {
    for (const auto value : QJsonDocument::fromJson(json).array()) {
        if (auto song = fromJson<PlayedSong>(value))
            m_songs.push_back(std::move(*song));
    }
    if (m_songs.size() > maxSongs)
        m_songs.erase(m_songs.begin(), m_songs.end() - static_cast<std::ptrdiff_t>(maxSongs));
}

bool SongHistory::note(const RadioState& state, TimePoint now) {
    const auto heard = songHeard(state);
    if (!heard)
        return false;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now.time_since_epoch()).count();
    PlayedSong song{seconds, state.station.rawValue(), cutText(*heard, maxSongCharacters)};
    if (!m_songs.empty() && m_songs.back().station == song.station && m_songs.back().song == song.song)
        return false;
    if (m_songs.size() == maxSongs)
        m_songs.erase(m_songs.begin());
    m_songs.push_back(std::move(song));
    return true;
}

QByteArray SongHistory::toJson() const {
    return QJsonDocument(zofra::toJson(m_songs).toArray()).toJson(QJsonDocument::Compact);
}

QString historyLines(const SongHistory& history) {
    QStringList lines;
    for (const PlayedSong& song : history.songs()) {
        const auto time = QDateTime::fromSecsSinceEpoch(song.time);
        lines.append(u"%1  %2: %3"_qs.arg(time.toString(u"yyyy-MM-dd HH:mm"_qs),
                                          visibleText(titleOf(song.station)), visibleText(song.song)));
    }
    return lines.join(u'\n');
}

QString historyJson(const SongHistory& history) {
    QJsonArray songs;
    for (const PlayedSong& song : history.songs()) {
        const auto time = QDateTime::fromSecsSinceEpoch(song.time);
        songs.append(
            QJsonObject{{u"time"_qs, time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate)},
                        {u"station"_qs, song.station},
                        {u"song"_qs, song.song}});
    }
    return compactJson(songs);
}

} // namespace zofra
