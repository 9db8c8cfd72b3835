// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/JsonText.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace zofra {

// What the live feed sends. Every field is optional: a missing key or a null leaves it absent, unknown keys
// are ignored. A value of another JSON type makes the whole document undecodable. Encoding leaves absent
// fields out. Plain values and pure functions, usable from any thread.

/// " – ", between an artist and a title wherever both are shown.
[[nodiscard]] QString nowPlayingSeparator();

/// Who performs a track.
struct ZofraLiveArtist {
    std::optional<QString> name;

    [[nodiscard]] static std::optional<ZofraLiveArtist> fromJson(const QJsonObject& object);
    [[nodiscard]] QJsonObject toJson() const;
    friend bool operator==(const ZofraLiveArtist&, const ZofraLiveArtist&) = default;
};

/// The track that will follow.
struct ZofraNextTrack {
    std::optional<QString> title;
    std::optional<ZofraLiveArtist> artist;

    /// Artist and title, or the one there is; empty when there is neither.
    [[nodiscard]] QString formatted() const;

    [[nodiscard]] static std::optional<ZofraNextTrack> fromJson(const QJsonObject& object);
    [[nodiscard]] QJsonObject toJson() const;
    friend bool operator==(const ZofraNextTrack&, const ZofraNextTrack&) = default;
};

/// The track on air.
struct ZofraLiveTrackData {
    std::optional<QString> title;
    std::optional<ZofraLiveArtist> artist;
    std::optional<ZofraNextTrack> next;

    /// Artist and title, or the one there is; "Radio" when there is neither.
    [[nodiscard]] QString formattedCurrent() const;

    [[nodiscard]] static std::optional<ZofraLiveTrackData> fromJson(const QJsonObject& object);
    [[nodiscard]] QJsonObject toJson() const;
    friend bool operator==(const ZofraLiveTrackData&, const ZofraLiveTrackData&) = default;
};

/// One event of the feed.
struct ZofraLivePlayEvent {
    /// The live-socket station id of the sender.
    std::optional<QString> station;
    std::optional<QString> entity;
    std::optional<QString> action;
    std::optional<ZofraLiveTrackData> data;

    [[nodiscard]] static std::optional<ZofraLivePlayEvent> fromJson(const QJsonObject& object);
    /// From a whole document, which may cost no more than `budget`.
    [[nodiscard]] static std::optional<ZofraLivePlayEvent> decode(const QByteArray& utf8, JsonBudget& budget);
    [[nodiscard]] QJsonObject toJson() const;
    friend bool operator==(const ZofraLivePlayEvent&, const ZofraLivePlayEvent&) = default;
};

/// One element of a SockJS array frame.
struct SockJSDataPayload {
    /// Only "data" is of interest.
    std::optional<QString> action;
    std::optional<std::vector<std::int64_t>> ids;
    /// A further JSON document: a ZofraLivePlayEvent.
    std::optional<QString> data;

    [[nodiscard]] static std::optional<SockJSDataPayload> fromJson(const QJsonObject& object);
    /// From a whole document, which may cost no more than `budget`.
    [[nodiscard]] static std::optional<SockJSDataPayload> decode(const QByteArray& utf8, JsonBudget& budget);
    [[nodiscard]] QJsonObject toJson() const;
    friend bool operator==(const SockJSDataPayload&, const SockJSDataPayload&) = default;
};

} // namespace zofra
