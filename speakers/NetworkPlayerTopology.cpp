// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlainOrder.h"
#include "speakers/PlayerAddress.h"
#include "speakers/PlayerXMLParser.h"

#include <QHash>

#include <algorithm>

namespace zofra {

namespace {

/// An attribute's value; one that is too long to be kept counts as missing.
std::optional<QString> attribute(const PlayerXMLNode& node, const QString& name) {
    const auto found = node.attributes.constFind(name);
    const bool isUsable =
        found != node.attributes.constEnd() && found->size() <= PlayerXMLLimits::fieldLength;
    return isUsable ? std::optional(*found) : std::nullopt;
}

std::optional<QUrl> location(const PlayerXMLNode& node) {
    const auto text = attribute(node, QStringLiteral("Location"));
    return text ? playerAddress(*text) : std::nullopt;
}

/// A satellite is reported, invisible, even when it names neither address nor room.
std::optional<PlayerTopologyMember> satellite(const PlayerXMLNode& node, const PlayerXMLNode& member,
                                              const QString& coordinator) {
    const auto uuid = attribute(node, QStringLiteral("UUID"));
    if (!uuid || uuid->isEmpty())
        return std::nullopt;
    auto zoneName = attribute(node, QStringLiteral("ZoneName"));
    if (!zoneName)
        zoneName = attribute(member, QStringLiteral("ZoneName"));
    return PlayerTopologyMember{*uuid, location(node), zoneName.value_or(QString()), false, coordinator};
}

std::optional<PlayerTopologyMember> groupMember(const PlayerXMLNode& node, const QString& coordinator) {
    const auto uuid = attribute(node, QStringLiteral("UUID"));
    const auto zoneName = attribute(node, QStringLiteral("ZoneName"));
    const auto url = location(node);
    if (!uuid || uuid->isEmpty() || !zoneName || !url)
        return std::nullopt;
    const bool isVisible = attribute(node, QStringLiteral("Invisible")) != QLatin1String("1");
    return PlayerTopologyMember{*uuid, url, *zoneName, isVisible, coordinator};
}

/// Everyone in one member element, satellites first; false once there are too many.
bool appendMember(QList<PlayerTopologyMember>& members, const PlayerXMLNode& member,
                  const QString& coordinator) {
    for (const auto& node : member.descendants(QStringLiteral("Satellite"))) {
        if (const auto record = satellite(*node, member, coordinator))
            members.append(*record);
        if (members.size() > NetworkPlayerProtocol::maxTopologyMembers)
            return false;
    }
    if (const auto record = groupMember(member, coordinator))
        members.append(*record);
    return members.size() <= NetworkPlayerProtocol::maxTopologyMembers;
}

} // namespace

QList<PlayerTopologyMember> NetworkPlayerProtocol::topology(const QString& response) {
    const auto envelope = xml(response);
    if (!envelope)
        return {};
    const auto states = envelope->descendants(QStringLiteral("ZoneGroupState"));
    const auto state = states.empty() ? nullptr : xml(states.front()->text);
    if (!state)
        return {};
    QList<PlayerTopologyMember> members;
    for (const auto& group : state->descendants(QStringLiteral("ZoneGroup"))) {
        const auto coordinator = attribute(*group, QStringLiteral("Coordinator")).value_or(QString());
        for (const auto& member : group->descendants(QStringLiteral("ZoneGroupMember"))) {
            if (!appendMember(members, *member, coordinator))
                return {};
        }
    }
    return members;
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
    std::stable_sort(merged.begin(), merged.end(),
                     [](const auto& a, const auto& b) { return plainlyBefore(a.uuid, b.uuid); });
    return merged;
}

} // namespace zofra
