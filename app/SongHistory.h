// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"
#include "platform/Clock.h"
#include "platform/JsonRecord.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace zofra {

/// A song that was heard.
struct PlayedSong {
    /// When it was first seen, in seconds since 1970.
    std::int64_t time = 0;
    /// Raw value of the station.
    QString station;
    QString song;

    friend bool operator==(const PlayedSong&, const PlayedSong&) = default;
};

template<>
struct JsonFields<PlayedSong> {
    template<typename Record, typename Visit>
    static void visit(Record& song, Visit visit) {
        visit("time", song.time);
        visit("station", song.station);
        visit("song", song.song);
    }
};

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

/// The song that `state` plays; absent while nothing plays, or nothing is known of it.
[[nodiscard]] std::optional<QString> songHeard(const RadioState& state);

/// What `--history` prints: a line for each song, with the time where the computer is.
[[nodiscard]] QString historyLines(const SongHistory& history);
/// The same for scripts: a list of objects.
[[nodiscard]] QString historyJson(const SongHistory& history);

} // namespace zofra
