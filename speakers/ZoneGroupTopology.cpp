// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlainOrder.h"
#include "speakers/PlayerAddress.h"
#include "speakers/PlayerXMLParser.h"

#include <QHash>

#include <algorithm>

namespace zofra {

namespace {

/// Elements looked at in one report. A real one is looked through thrice: groups, members, satellites.
constexpr std::size_t maxVisits = std::size_t{4} * PlayerXMLLimits::elements;

/// An attribute's value; one that is too long to be kept counts as missing.
std::optional<QString> attribute(const PlayerXMLNode& node, const QString& name) {
    const auto found = node.attributes.constFind(name);
    const bool isUsable =
        found != node.attributes.constEnd() && found->size() <= PlayerXMLLimits::fieldLength;
    return isUsable ? std::optional(*found) : std::nullopt;
}

std::optional<QUrl> location(const PlayerXMLNode& node) {
    const auto text = attribute(node, u"Location"_qs);
    return text ? playerAddress(*text) : std::nullopt;
}

/// A satellite is reported, invisible, even when it names neither address nor room.
std::optional<PlayerTopologyMember> satellite(const PlayerXMLNode& node, const PlayerXMLNode& member,
                                              const QString& coordinator) {
    const auto uuid = attribute(node, u"UUID"_qs);
    if (!uuid || uuid->isEmpty())
        return std::nullopt;
    auto zoneName = attribute(node, u"ZoneName"_qs);
    if (!zoneName)
        zoneName = attribute(member, u"ZoneName"_qs);
    return PlayerTopologyMember{*uuid, location(node), zoneName.value_or(QString()), false, coordinator};
}

std::optional<PlayerTopologyMember> groupMember(const PlayerXMLNode& node, const QString& coordinator) {
    const auto uuid = attribute(node, u"UUID"_qs);
    const auto zoneName = attribute(node, u"ZoneName"_qs);
    const auto url = location(node);
    if (!uuid || uuid->isEmpty() || !zoneName || !url)
        return std::nullopt;
    const bool isVisible = attribute(node, u"Invisible"_qs) != u"1";
    return PlayerTopologyMember{*uuid, url, *zoneName, isVisible, coordinator};
}

/// Everyone in one report, or nobody when groups and members are nested so that they multiply.
class Report {
public:
    QList<PlayerTopologyMember> read(const PlayerXMLNode& state) {
        for (const auto& group : state.descendants(u"ZoneGroup"_qs, m_visits))
            readGroup(*group, attribute(*group, u"Coordinator"_qs).value_or(QString()));
        const bool isWhole = m_visits > 0 && m_members.size() <= NetworkPlayerProtocol::maxTopologyMembers;
        return isWhole ? m_members : QList<PlayerTopologyMember>();
    }

private:
    void readGroup(const PlayerXMLNode& group, const QString& coordinator) {
        for (const auto& member : group.descendants(u"ZoneGroupMember"_qs, m_visits)) {
            for (const auto& node : member->descendants(u"Satellite"_qs, m_visits))
                keep(satellite(*node, *member, coordinator));
            keep(groupMember(*member, coordinator));
        }
    }
    void keep(const std::optional<PlayerTopologyMember>& record) {
        if (record && m_members.size() <= NetworkPlayerProtocol::maxTopologyMembers)
            m_members.append(*record);
    }

    QList<PlayerTopologyMember> m_members;
    std::size_t m_visits = maxVisits;
};

} // namespace

QList<PlayerTopologyMember> NetworkPlayerProtocol::topology(const QString& response) {
    const auto envelope = xml(response);
    const auto states =
        envelope ? envelope->descendants(u"ZoneGroupState"_qs) : decltype(envelope->children)();
    const auto state = states.empty() ? nullptr : xml(states.front()->text);
    return state ? Report().read(*state) : QList<PlayerTopologyMember>();
}

QList<PlayerTopologyMember> NetworkPlayerProtocol::merge(const QList<QList<PlayerTopologyMember>>& answers) {
    QHash<QString, PlayerTopologyMember> table;
    for (const auto& answer : answers) {
        for (const auto& member : answer) {
            const auto known = table.find(member.uuid);
            if (known == table.end())
                table.insert(member.uuid, member);
            else if (known->isVisible || !member.isVisible)
                *known = member;
        }
    }
    auto merged = table.values();
    std::ranges::stable_sort(merged, plainlyBefore, &PlayerTopologyMember::uuid);
    return merged;
}

void applyTopology(SonosSpeaker& speaker, const PlayerTopologyMember& member) {
    if (!member.zoneName.isEmpty())
        speaker.roomName = member.zoneName;
    speaker.isVisible = member.isVisible;
    if (!member.coordinator.isEmpty())
        speaker.groupCoordinatorId = member.coordinator;
    speaker.isCoordinator = member.coordinator.isEmpty() || member.coordinator == speaker.id;
}

} // namespace zofra
