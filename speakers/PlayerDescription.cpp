// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlayerXMLParser.h"

#include <QHash>
#include <QRegularExpression>

namespace zofra {

namespace {

std::optional<QString> trimmedChild(const PlayerXMLNode& node, const QString& name) {
    const auto child = node.child(name);
    return child ? std::optional(child->text.trimmed()) : std::nullopt;
}

/// Service type to control address; embedded devices count too, and a later service of the same type wins.
QHash<QString, QString> serviceTable(const PlayerXMLNode& device) {
    QHash<QString, QString> table;
    for (const auto& service : device.descendants(u"service"_qs)) {
        const auto type = trimmedChild(*service, u"serviceType"_qs);
        const auto control = trimmedChild(*service, u"controlURL"_qs);
        if (type && control)
            table.insert(*type, *control);
    }
    return table;
}

std::optional<QString> controlPath(const QHash<QString, QString>& table, QLatin1String service) {
    const auto found = table.constFind(QLatin1String("urn:schemas-upnp-org:service:") + service);
    return found == table.constEnd() ? std::nullopt : std::optional(*found);
}

/// Whether every text of a speaker is short enough to be kept.
bool isKeepable(const SonosSpeaker& speaker) {
    const auto fits = [](const QString& text) { return text.size() <= PlayerXMLLimits::fieldLength; };
    for (const auto& text :
         {speaker.manufacturer, speaker.transportPath, speaker.renderingPath, speaker.topologyPath}) {
        if (text && !fits(*text))
            return false;
    }
    return fits(speaker.id) && fits(speaker.roomName) && fits(speaker.model);
}

bool namesSub(const QString& model) {
    static const QRegularExpression sub(u"\\bSub\\b"_qs, QRegularExpression::CaseInsensitiveOption |
                                                             QRegularExpression::UseUnicodePropertiesOption);
    return sub.match(model).hasMatch();
}

} // namespace

std::optional<SonosSpeaker> NetworkPlayerProtocol::speaker(const QString& description, const QUrl& url) {
    const auto root = xml(description);
    const auto device = root ? root->child(u"device"_qs) : nullptr;
    if (!device || trimmedChild(*device, u"deviceType"_qs) != QLatin1String(deviceType))
        return std::nullopt;
    const auto udn = trimmedChild(*device, u"UDN"_qs);
    const QLatin1String prefix("uuid:");
    if (!udn || !udn->startsWith(prefix) || udn->size() <= prefix.size() || url.host().isEmpty())
        return std::nullopt;

    auto model = trimmedChild(*device, u"modelName"_qs);
    if (!model)
        model = trimmedChild(*device, u"modelDescription"_qs);
    SonosSpeaker speaker;
    speaker.id = udn->sliced(prefix.size());
    speaker.ip = url.host();
    speaker.model = model.value_or(u"Sonos"_qs);
    auto roomName = trimmedChild(*device, u"roomName"_qs);
    if (!roomName)
        roomName = trimmedChild(*device, u"friendlyName"_qs);
    speaker.roomName = roomName.value_or(speaker.model);
    speaker.manufacturer = trimmedChild(*device, u"manufacturer"_qs);
    speaker.modelName = speaker.model;
    speaker.descriptionURL = url;
    const auto services = serviceTable(*device);
    speaker.transportPath = controlPath(services, QLatin1String("AVTransport:1"));
    speaker.renderingPath = controlPath(services, QLatin1String("RenderingControl:1"));
    speaker.topologyPath = controlPath(services, QLatin1String("ZoneGroupTopology:1"));
    if (!isKeepable(speaker))
        return std::nullopt;
    speaker.isSub = !speaker.isZofra() && namesSub(speaker.model);
    return speaker;
}

} // namespace zofra
