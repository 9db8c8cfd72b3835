// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "speakers/SonosRoom.h"

namespace zofra {

/// One entry of a household's topology report. A plain value; no field is ever reassigned.
struct PlayerTopologyMember {
    /// As written in the report.
    QString uuid;
    std::optional<QUrl> descriptionURL;
    QString zoneName;
    bool isVisible = true;
    /// The group's leader; empty when the report names none.
    QString coordinator;

    friend bool operator==(const PlayerTopologyMember&, const PlayerTopologyMember&) = default;
    friend size_t qHash(const PlayerTopologyMember& member, size_t seed = 0) {
        seed = qHashMulti(seed, member.uuid, member.descriptionURL.has_value(),
                          member.descriptionURL.value_or(QUrl()));
        return qHashMulti(seed, member.zoneName, member.isVisible, member.coordinator);
    }
};

/// Changes a speaker as the household's topology has it.
void applyTopology(SonosSpeaker& speaker, const PlayerTopologyMember& member);

/// Players that play one stream together. A plain value.
struct PlayerPlaybackGroup {
    /// Receives the stream; the others join it.
    SonosSpeaker leader;
    QList<SonosSpeaker> followers;

    friend bool operator==(const PlayerPlaybackGroup&, const PlayerPlaybackGroup&) = default;
    friend size_t qHash(const PlayerPlaybackGroup& group, size_t seed = 0) {
        return qHashMulti(seed, group.leader, group.followers);
    }
};

/// A device description is a few kilobytes; a longer answer than this is none.
inline constexpr std::size_t maxDescriptionBytes = 262'144;

/// A plain GET of a device description, past every proxy: players are neighbours.
[[nodiscard]] inline HttpRequest descriptionRequest(const QUrl& url, std::chrono::milliseconds timeout) {
    return {.url = url,
            .timeout = timeout,
            .maxBodyBytes = maxDescriptionBytes,
            .route = HttpRequest::Route::direct};
}

/// Makes of what players send the program's own records. Pure functions, callable from any thread.
namespace NetworkPlayerProtocol {

/// What a player says it is, as device type and as search target.
inline constexpr const char* deviceType = "urn:schemas-upnp-org:device:ZonePlayer:1";
/// The address of the device description that one search answer names.
[[nodiscard]] std::optional<QUrl> ssdpLocation(const QString& datagram);

/// The player that a device description, fetched from `url`, describes: a visible coordinator of its own.
[[nodiscard]] std::optional<SonosSpeaker> speaker(const QString& description, const QUrl& url);

/// A report with more members than this is refused: elements can be nested so that they multiply.
inline constexpr qsizetype maxTopologyMembers = 4096;
/// The members that an answer to GetZoneGroupState reports; satellites come before their member.
[[nodiscard]] QList<PlayerTopologyMember> topology(const QString& response);
/// One record per `uuid`, in speaker order. The later answer wins, but who was called invisible stays so.
[[nodiscard]] QList<PlayerTopologyMember> merge(const QList<QList<PlayerTopologyMember>>& answers);

/// How to play on these speakers together: other makers' players as one group, own players each alone.
[[nodiscard]] QList<PlayerPlaybackGroup> playbackGroups(const QList<SonosSpeaker>& speakers);
/// The rooms that these speakers make, in room order.
[[nodiscard]] QList<SonosRoom> rooms(const QList<SonosSpeaker>& speakers);

} // namespace NetworkPlayerProtocol

} // namespace zofra
