// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "speakers/SoapRequest.h"
#include "speakers/SonosSpeaker.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace zofra::test {

/// A player of another maker, at 10.0.0.`host`, leading itself.
inline SonosSpeaker otherPlayer(const QString& id, const QString& roomName, int host = 5) {
    SonosSpeaker speaker;
    speaker.id = id;
    speaker.ip = QStringLiteral("10.0.0.%1").arg(host);
    speaker.roomName = roomName;
    speaker.model = QStringLiteral("Sonos One");
    speaker.manufacturer = QStringLiteral("Sonos, Inc.");
    speaker.modelName = speaker.model;
    return speaker;
}

/// One of this product's own players.
inline SonosSpeaker ownPlayer(const QString& id, const QString& roomName, int host = 6) {
    auto speaker = otherPlayer(id, roomName, host);
    speaker.model = QStringLiteral("Zofra Pi Player");
    speaker.modelName = speaker.model;
    speaker.manufacturer = QStringLiteral("Zofra Zofra");
    return speaker;
}

inline QUrl descriptionUrl(int host) {
    return QUrl(QStringLiteral("http://10.0.0.%1:1400/xml/device_description.xml").arg(host));
}

/// A description of a player, as short as one can be.
inline QString description(const QString& id, const QString& roomName,
                           const QString& modelName = QStringLiteral("Sonos One")) {
    return QStringLiteral(
               "<root xmlns=\"urn:schemas-upnp-org:device-1-0\"><device>"
               "<deviceType>urn:schemas-upnp-org:device:ZonePlayer:1</deviceType>"
               "<UDN>uuid:%1</UDN><roomName>%2</roomName><modelName>%3</modelName></device></root>")
        .arg(id, roomName, modelName);
}

/// One member of a report; `more` holds further attributes.
inline QString memberXml(const QString& uuid, const QString& location, const QString& zoneName,
                         const QString& more = {}) {
    return QStringLiteral("<ZoneGroupMember UUID=\"%1\" Location=\"%2\" ZoneName=\"%3\" %4/>")
        .arg(uuid, location, zoneName, more);
}

inline QString groupXml(const QString& coordinator, const QString& members) {
    return QStringLiteral("<ZoneGroup Coordinator=\"%1\" ID=\"%1:1\">%2</ZoneGroup>")
        .arg(coordinator, members);
}

/// An answer to GetZoneGroupState holding `inner` as escaped text.
inline QString topologyAnswer(const QString& inner) {
    return QStringLiteral(
               "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body>"
               "<u:GetZoneGroupStateResponse xmlns:u=\"urn:schemas-upnp-org:service:ZoneGroupTopology:1\">"
               "<ZoneGroupState>") +
           escapedForXml(inner) +
           QStringLiteral("</ZoneGroupState></u:GetZoneGroupStateResponse></s:Body></s:Envelope>");
}

/// The same for a list of groups.
inline QString householdAnswer(const QStringList& groups) {
    return topologyAnswer(QStringLiteral("<ZoneGroupState><ZoneGroups>") + groups.join(QString()) +
                          QStringLiteral("</ZoneGroups></ZoneGroupState>"));
}

inline QByteArray ssdpAnswer(const QString& location) {
    return (QStringLiteral("HTTP/1.1 200 OK\r\nCACHE-CONTROL: max-age = 1800\r\nEXT:\r\nLOCATION: ") +
            location + QStringLiteral("\r\nST: urn:schemas-upnp-org:device:ZonePlayer:1\r\n\r\n"))
        .toUtf8();
}

inline HttpResult answered(int status, const QString& body = {}) {
    return HttpResponse{status, body.toUtf8()};
}

inline HttpResult failed(HttpError::Code code, const QString& text = QStringLiteral("failed")) {
    return failure(HttpError{code, 0, text});
}

/// The name of the action that a control request asks for; empty for any other request.
inline QString actionOf(const HttpRequest& request) {
    for (const auto& [name, value] : request.headers) {
        if (name == "SOAPACTION") {
            const auto text = QString::fromUtf8(value);
            return text.mid(text.indexOf(u'#') + 1).chopped(1);
        }
    }
    return {};
}

/// "Play 10.0.0.5", or "GET 10.0.0.5".
inline QString summary(const HttpRequest& request) {
    const auto action = actionOf(request);
    return (action.isEmpty() ? QString::fromUtf8(request.method) : action) + u' ' + request.url.host();
}

/// The text of a captured file, or nothing where the captures are missing.
inline std::optional<QString> capture(const QString& name) {
    auto folder = qEnvironmentVariable("ZOFRA_FIXTURES");
    if (folder.isEmpty())
        folder = QStringLiteral(ZOFRA_SOURCE_DIR "/../shared/fixtures");
    QFile file(folder + u'/' + name);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return QString::fromUtf8(file.readAll());
}

} // namespace zofra::test
