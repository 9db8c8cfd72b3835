// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"
#include "app/Settings.h"
#include "platform/Clock.h"
#include "platform/ForeignText.h"
#include "platform/JsonRecord.h"
#include "platform/OwnFile.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace zofra {

/// A song that was heard.
struct PlayedSong {
    /// When it was first seen, in seconds since 1970.
    std::int64_t time = 0;
    /// Raw value of the station.
    QString station;
    QString song;

    static void visitFields(auto& song, auto&& field) {
        field("time", song.time);
        field("station", song.station);
        field("song", song.song);
    }
    friend bool operator==(const PlayedSong&, const PlayedSong&) = default;
};

/// The song that `state` plays; absent while nothing plays, or nothing is known of it.
[[nodiscard]] inline std::optional<QString> songHeard(const RadioState& state) {
    // A station of which nothing else is known is shown with its own name.
    const bool isKnown = !state.isLoading && !state.currentSong.trimmed().isEmpty() &&
                         state.currentSong != state.station.displayName();
    return state.isPlaying && isKnown ? std::optional(state.currentSong) : std::nullopt;
}

/// The last songs that were heard, the newest last.
class SongHistory {
public:
    static constexpr std::size_t maxSongs = 200;
    /// More than that is in no file of ours.
    static constexpr qint64 maxBytes = 1'000'000;
    /// No song has a longer name.
    static constexpr qsizetype maxSongCharacters = 1000;

    SongHistory() = default;
    /// What `toJson` gave; whatever is none of that is left out.
    explicit SongHistory(const QByteArray& json) {
        for (const auto value : QJsonDocument::fromJson(json).array()) {
            if (auto song = fromJson<PlayedSong>(value))
                m_songs.push_back(std::move(*song));
        }
        if (m_songs.size() > maxSongs)
            m_songs.erase(m_songs.begin(), m_songs.end() - static_cast<std::ptrdiff_t>(maxSongs));
    }

    /// Notes the song that `state` plays, unless it is the last one already. True when there is a new one.
    bool note(const RadioState& state, TimePoint now) {
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
    [[nodiscard]] const std::vector<PlayedSong>& songs() const { return m_songs; }
    /// What `--history` prints: a line for each song, with the time where the computer is.
    [[nodiscard]] QString lines() const {
        QStringList lines;
        for (const PlayedSong& song : m_songs) {
            const auto station = RadioStation::fromRawValue(song.station);
            const auto time = QDateTime::fromSecsSinceEpoch(song.time);
            lines.append(u"%1  %2: %3"_qs.arg(time.toString(u"yyyy-MM-dd HH:mm"_qs),
                                              visibleText(station ? station->displayName() : song.station),
                                              visibleText(song.song)));
        }
        return lines.join(u'\n');
    }
    /// The same for scripts: a list of objects.
    [[nodiscard]] QString forScripts() const {
        QJsonArray songs;
        for (const PlayedSong& song : m_songs) {
            const auto time = QDateTime::fromSecsSinceEpoch(song.time);
            songs.append(
                QJsonObject{{u"time"_qs, time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate)},
                            {u"station"_qs, song.station},
                            {u"song"_qs, song.song}});
        }
        return compactJson(songs);
    }
    /// As it is kept.
    [[nodiscard]] QByteArray toJson() const {
        return QJsonDocument(zofra::toJson(m_songs).toArray()).toJson(QJsonDocument::Compact);
    }

private:
    std::vector<PlayedSong> m_songs;
};

/// Keeps the history of songs in its file, unless the settings say otherwise. Main thread only.
class SongLog {
public:
    /// All of it outlives the log. The file is read when there is something to add.
    SongLog(OwnFile& file, const DefaultsStore& defaults, Clock clock)
        : m_file(file)
        , m_defaults(defaults)
        , m_clock(std::move(clock)) {}

    /// The state has changed.
    void show(const RadioState& state) {
        if (!songHeard(state) || !isOn(m_defaults, keepHistoryKey, true))
            return;
        if (!m_history)
            m_history.emplace(m_file.read());
        if (m_history->note(state, m_clock()))
            m_file.write(m_history->toJson());
    }

private:
    OwnFile& m_file;
    const DefaultsStore& m_defaults;
    Clock m_clock;
    std::optional<SongHistory> m_history;
};

} // namespace zofra
