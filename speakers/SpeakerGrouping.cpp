// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/NetworkPlayerProtocol.h"

#include <QHash>

#include <algorithm>

namespace zofra {

namespace {

bool isEligible(const SonosSpeaker& speaker) {
    return speaker.isVisible && !speaker.isSub;
}

/// Players with the same key make one room.
QString roomKey(const SonosSpeaker& speaker) {
    if (speaker.isZofra())
        return u"zofra:"_qs + speaker.id;
    return u"sonos:"_qs + speaker.roomName + u':' + speaker.groupCoordinatorId.value_or(speaker.id);
}

SonosRoom makeRoom(QList<SonosSpeaker> speakers) {
    std::ranges::stable_sort(speakers, comesBefore);
    auto coordinator = std::ranges::find_if(speakers, &SonosSpeaker::isCoordinator);
    if (coordinator == speakers.end())
        coordinator = speakers.begin();
    return SonosRoom{coordinator->roomName, *coordinator, speakers};
}

} // namespace

QList<PlayerPlaybackGroup> NetworkPlayerProtocol::playbackGroups(const QList<SonosSpeaker>& speakers) {
    QList<SonosSpeaker> eligible;
    std::ranges::copy_if(speakers, std::back_inserter(eligible), isEligible);
    std::ranges::stable_sort(eligible, comesBefore);
    const auto firstOwn = std::stable_partition(
        eligible.begin(), eligible.end(), [](const SonosSpeaker& speaker) { return !speaker.isZofra(); });
    QList<PlayerPlaybackGroup> groups;
    if (firstOwn != eligible.begin())
        groups.append({eligible.first(), QList<SonosSpeaker>(eligible.begin() + 1, firstOwn)});
    for (auto own = firstOwn; own != eligible.end(); ++own)
        groups.append({*own, {}});
    return groups;
}

QList<SonosRoom> NetworkPlayerProtocol::rooms(const QList<SonosSpeaker>& speakers) {
    QHash<QString, QList<SonosSpeaker>> buckets;
    for (const auto& speaker : speakers) {
        if (isEligible(speaker))
            buckets[roomKey(speaker)].append(speaker);
    }
    QList<SonosRoom> rooms;
    for (const auto& bucket : std::as_const(buckets))
        rooms.append(makeRoom(bucket));
    std::ranges::stable_sort(rooms, RoomOrder());
    return rooms;
}

} // namespace zofra
