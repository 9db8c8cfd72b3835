// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"
#include "app/Settings.h"
#include "platform/Clock.h"
#include "platform/JsonRecord.h"
#include "platform/OwnFile.h"

#include <QByteArray>
#include <QString>

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
[[nodiscard]] std::optional<QString> songHeard(const RadioState& state);

/// The last songs that were heard, the newest last.
class SongHistory {
public:
    static constexpr std::size_t maxSongs = 200;
    /// More than that is in no file of ours.
    static constexpr qint64 maxBytes = 1'000'000;

    SongHistory() = default;
    /// What `toJson` gave; whatever is none of that is left out.
    explicit SongHistory(const QByteArray& json);

    /// Notes the song that `state` plays, unless it is the last one already. True when there is a new one.
    bool note(const RadioState& state, TimePoint now);
    [[nodiscard]] const std::vector<PlayedSong>& songs() const { return m_songs; }
    [[nodiscard]] QByteArray toJson() const;

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

/// What `--history` prints: a line for each song, with the time where the computer is.
[[nodiscard]] QString historyLines(const SongHistory& history);
/// The same for scripts: a list of objects.
[[nodiscard]] QString historyJson(const SongHistory& history);

} // namespace zofra
