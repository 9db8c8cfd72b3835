// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/PlayerPlaybackGroup.h"
#include "speakers/PlayerTopologyMember.h"
#include "speakers/PlayerXMLNode.h"
#include "speakers/SonosRoom.h"
#include "speakers/SonosSpeaker.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

namespace zofra {

/// Turns what network players send into records, and groups those. Pure functions, callable from any thread;
/// bad or hostile input gives nothing.
class NetworkPlayerProtocol {
public:
    NetworkPlayerProtocol() = delete;

    /// What a player says it is, as device type and as search target.
    static constexpr const char* deviceType = "urn:schemas-upnp-org:device:ZonePlayer:1";

    /// The address of the device description that one search answer names.
    [[nodiscard]] static std::optional<QUrl> ssdpLocation(const QString& datagram);

    /// The player that a device description, fetched from `url`, describes: a visible coordinator of its own.
    [[nodiscard]] static std::optional<SonosSpeaker> speaker(const QString& description, const QUrl& url);

    /// The root of an XML document, or null. Document types are refused; `PlayerXMLLimits` hold.
    [[nodiscard]] static PlayerXMLNode::Pointer xml(const QString& text);

    /// A report with more members than this is refused: elements can be nested so that they multiply.
    static constexpr qsizetype maxTopologyMembers = 4096;
    /// The members that an answer to GetZoneGroupState reports; satellites come before their member.
    [[nodiscard]] static QList<PlayerTopologyMember> topology(const QString& response);

    /// One record per `uuid`, in speaker order. The later answer wins, but who was called invisible stays so.
    [[nodiscard]] static QList<PlayerTopologyMember> merge(const QList<QList<PlayerTopologyMember>>& answers);

    /// How to play on these speakers together: other makers' players as one group, own players each alone.
    [[nodiscard]] static QList<PlayerPlaybackGroup> playbackGroups(const QList<SonosSpeaker>& speakers);

    /// The rooms that these speakers make, in room order.
    [[nodiscard]] static QList<SonosRoom> rooms(const QList<SonosSpeaker>& speakers);
};

} // namespace zofra
