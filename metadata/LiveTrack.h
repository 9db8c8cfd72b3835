// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/JsonText.h"
#include "platform/JsonRecord.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace zofra {

// What the live feed sends, as JSON records of optional fields. Usable from any thread.

/// " – ", between an artist and a title wherever both are shown.
[[nodiscard]] inline QString nowPlayingSeparator() {
    return u" \u2013 "_qs;
}

/// Who performs a track.
struct ZofraLiveArtist {
    std::optional<QString> name;
    static void visitFields(auto& artist, auto&& field) { field("name", artist.name); }
    friend bool operator==(const ZofraLiveArtist&, const ZofraLiveArtist&) = default;
};

/// Artist and title, or the one there is; `otherwise` when there is neither.
[[nodiscard]] inline QString artistAndTitle(const std::optional<ZofraLiveArtist>& artist,
                                            const std::optional<QString>& title, const QString& otherwise) {
    const auto a = artist ? artist->name.value_or(QString()).trimmed() : QString();
    const auto t = title.value_or(QString()).trimmed();
    if (!a.isEmpty() && !t.isEmpty())
        return a + nowPlayingSeparator() + t;
    return !t.isEmpty() ? t : !a.isEmpty() ? a : otherwise;
}

/// The track that will follow.
struct ZofraNextTrack {
    std::optional<QString> title;
    std::optional<ZofraLiveArtist> artist;

    /// Artist and title, or the one there is; empty when there is neither.
    [[nodiscard]] QString formatted() const { return artistAndTitle(artist, title, QString()); }
    static void visitFields(auto& track, auto&& field) {
        field("title", track.title);
        field("artist", track.artist);
    }
    friend bool operator==(const ZofraNextTrack&, const ZofraNextTrack&) = default;
};

/// The track on air.
struct ZofraLiveTrackData {
    std::optional<QString> title;
    std::optional<ZofraLiveArtist> artist;
    std::optional<ZofraNextTrack> next;

    /// Artist and title, or the one there is; "Radio" when there is neither.
    [[nodiscard]] QString formattedCurrent() const { return artistAndTitle(artist, title, u"Radio"_qs); }
    /// The same of the track that will follow, if anything is known of it.
    [[nodiscard]] std::optional<QString> formattedNext() const {
        const QString text = next ? next->formatted() : QString();
        return text.isEmpty() ? std::nullopt : std::optional(text);
    }
    static void visitFields(auto& track, auto&& field) {
        field("title", track.title);
        field("artist", track.artist);
        field("next", track.next);
    }
    friend bool operator==(const ZofraLiveTrackData&, const ZofraLiveTrackData&) = default;
};

/// One event of the feed.
struct ZofraLivePlayEvent {
    /// The live-socket station id of the sender.
    std::optional<QString> station;
    std::optional<QString> entity;
    std::optional<QString> action;
    std::optional<ZofraLiveTrackData> data;
    static void visitFields(auto& event, auto&& field) {
        field("station", event.station);
        field("entity", event.entity);
        field("action", event.action);
        field("data", event.data);
    }
    friend bool operator==(const ZofraLivePlayEvent&, const ZofraLivePlayEvent&) = default;
};

/// One element of a SockJS array frame.
struct SockJSDataPayload {
    /// Only "data" is of interest.
    std::optional<QString> action;
    std::optional<std::vector<std::int64_t>> ids;
    /// A further JSON document: a ZofraLivePlayEvent.
    std::optional<QString> data;
    static void visitFields(auto& payload, auto&& field) {
        field("action", payload.action);
        field("ids", payload.ids);
        field("data", payload.data);
    }
    friend bool operator==(const SockJSDataPayload&, const SockJSDataPayload&) = default;
};

/// The record in a whole document, which may cost no more than `budget`.
template<typename Record>
[[nodiscard]] std::optional<Record> decodeDocument(const QByteArray& utf8, JsonBudget& budget) {
    const auto document = parseJsonText(utf8, budget);
    return document && document->isObject() ? fromJson<Record>(document->object()) : std::nullopt;
}

} // namespace zofra
