// SPDX-License-Identifier: GPL-3.0-or-later
// A whole household from one input: each player's search answer leads to its description, some tell a
// topology; the rooms that come of it are kept, read again, and sent orders.
#include "fuzz/FuzzBytes.h"
#include "fuzz/FuzzInput.h"
#include "platform/HttpSession.h"
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlayerXMLParser.h"
#include "speakers/RoomCache.h"
#include "speakers/SoapRequest.h"

#include <QSet>

#include <algorithm>

namespace {

using namespace zofra;

constexpr auto nextPart = "\n--\n";
constexpr int mostPlayers = 24;

/// A text of the input, or one of a well-behaved player in which the input only fills gaps.
QString searchAnswer(fuzz::Input& input, int index) {
    if (input.byte() % 4 == 0)
        return QString::fromUtf8(input.until(nextPart));
    return QStringLiteral("HTTP/1.1 200 OK\r\nST: urn:schemas-upnp-org:device:ZonePlayer:1\r\n"
                          "LOCATION: http://10.0.0.%1:1400/xml/device_description.xml%2\r\n\r\n")
        .arg(index + 1)
        .arg(input.text());
}

QString description(fuzz::Input& input, int index) {
    if (input.byte() % 4 == 0)
        return QString::fromUtf8(input.until(nextPart));
    const auto inner = input.text();
    return QStringLiteral("<root xmlns=\"urn:schemas-upnp-org:device-1-0\"><device>"
                          "<deviceType>urn:schemas-upnp-org:device:ZonePlayer:1</deviceType>"
                          "<manufacturer>%1</manufacturer><modelName>%2</modelName><UDN>uuid:P%3</UDN>"
                          "<roomName>%4</roomName>%5</device></root>")
        .arg(input.oneOf({QStringLiteral("Sonos, Inc."), QStringLiteral("Zofra"), QStringLiteral("Else")}),
             input.oneOf({QStringLiteral("One"), QStringLiteral("Sub"), QStringLiteral("Zofra Pi Player")}))
        .arg(input.byte() % 8 == 0 ? input.byte() % mostPlayers : index)
        .arg(escapedForXml(input.text()), inner);
}

QString topology(fuzz::Input& input) {
    if (input.byte() % 4 == 0)
        return QString::fromUtf8(input.until(nextPart));
    QString groups;
    for (auto count = input.byte() % 6; count > 0; --count) {
        groups += QStringLiteral("<ZoneGroup Coordinator=\"P%1\" ID=\"g\">").arg(input.byte() % mostPlayers);
        for (auto members = input.byte() % 8; members > 0; --members) {
            const auto id = input.byte() % mostPlayers;
            groups += QStringLiteral("<ZoneGroupMember UUID=\"P%1\" Location=\"http://10.0.0.%2:1400/d.xml\" "
                                     "ZoneName=\"%3\"%4/>")
                          .arg(id)
                          .arg(id + 1)
                          .arg(escapedForXml(input.text()),
                               input.byte() % 3 == 0 ? QStringLiteral(" Invisible=\"1\"") : QString());
        }
        groups += QStringLiteral("</ZoneGroup>");
    }
    const auto report =
        QStringLiteral("<ZoneGroupState><ZoneGroups>%1</ZoneGroups></ZoneGroupState>").arg(groups);
    return QStringLiteral("<r><ZoneGroupState>%1</ZoneGroupState></r>").arg(escapedForXml(report));
}

/// What topology says of a player, put into its record as the search does.
void place(SonosSpeaker& speaker, const QList<PlayerTopologyMember>& members) {
    for (const auto& member : members) {
        if (member.uuid != speaker.id)
            continue;
        speaker.groupCoordinatorId = member.coordinator;
        speaker.isCoordinator = member.coordinator == speaker.id;
        speaker.isVisible = member.isVisible;
        if (!member.zoneName.isEmpty())
            speaker.roomName = member.zoneName;
    }
}

void checkRooms(const QList<SonosRoom>& rooms, const QList<SonosSpeaker>& speakers) {
    QSet<QString> ids;
    qsizetype placed = 0;
    for (const auto& room : rooms) {
        fuzz::require(!ids.contains(room.id()));
        ids.insert(room.id());
        fuzz::require(room.speakers.contains(room.coordinator) && !room.coordinator.isSub);
        placed += room.speakers.size();
    }
    fuzz::require(placed <= speakers.size());
    // What is kept is what is read; a second keeping changes nothing.
    const auto kept = encodeRooms(rooms);
    const auto read = decodeRooms(kept);
    fuzz::require(read && encodeRooms(*read) == kept);
}

/// No name and no address of a neighbour's making ends a header or an element.
void checkRequest(const HttpRequest& request) {
    for (const auto& [name, value] : request.headers)
        fuzz::require(!name.contains('\n') && !value.contains('\n') && !value.contains('\r'));
    fuzz::require(NetworkPlayerProtocol::xml(QString::fromUtf8(request.body)) != nullptr);
}

void checkOrders(const QList<SonosSpeaker>& speakers, const QString& stream) {
    const auto groups = NetworkPlayerProtocol::playbackGroups(speakers);
    QSet<QString> played;
    for (const auto& group : groups) {
        for (const auto& speaker : QList<SonosSpeaker>{group.leader} + group.followers) {
            fuzz::require(!speaker.isSub && !played.contains(speaker.id));
            played.insert(speaker.id);
        }
        const auto endpoint =
            group.leader.endpoint(group.leader.transportPath, QString::fromLatin1(ControlPath::transport));
        fuzz::require(endpoint.isValid() && !endpoint.host().isEmpty());
        // The stream is ours, but the group that a follower joins has the name that a player gave itself.
        for (const auto& uri : {stream, QStringLiteral("x-rincon:") + group.leader.id}) {
            const auto request = soapRequest(endpoint, QStringLiteral("AVTransport:1"),
                                             QStringLiteral("SetAVTransportURI"), setTransportUriBody(uri));
            checkRequest(request);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    QList<SonosSpeaker> speakers;
    QList<QList<PlayerTopologyMember>> answers;
    const auto count = input.byte() % mostPlayers;
    for (int i = 0; i < count && !input.isEmpty(); ++i) {
        const auto location = NetworkPlayerProtocol::ssdpLocation(searchAnswer(input, i));
        if (!location)
            continue;
        auto speaker = NetworkPlayerProtocol::speaker(description(input, i), *location);
        const auto isKnown = [&](const SonosSpeaker& one) { return speaker && one.id == speaker->id; };
        if (speaker && std::none_of(speakers.begin(), speakers.end(), isKnown))
            speakers << *speaker;
        if (input.byte() % 2 == 0)
            answers << NetworkPlayerProtocol::topology(topology(input));
    }
    const auto members = NetworkPlayerProtocol::merge(answers);
    for (auto& speaker : speakers)
        place(speaker, members);
    checkRooms(NetworkPlayerProtocol::rooms(speakers), speakers);
    checkOrders(speakers,
                QStringLiteral("x-rincon-mp3radio://zofra-mp3.streams.example/zofra.mp3?a=1&b=<2>"));
    return 0;
}
