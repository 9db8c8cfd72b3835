// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/NetworkPlayerProtocol.h"

#include "speakers/PlayerAddress.h"
#include "speakers/PlayerXMLParser.h"

#include <QHash>
#include <QRegularExpression>
#include <QXmlStreamReader>

namespace zofra {

namespace {

bool isNewline(QChar character) {
    const auto unit = character.unicode();
    return (unit >= 0x0A && unit <= 0x0D) || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
}

QList<QStringView> lines(QStringView text) {
    QList<QStringView> result;
    qsizetype start = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isNewline(text[i])) {
            result.append(text.sliced(start, i - start));
            start = i + 1;
        }
    }
    result.append(text.sliced(start));
    return result;
}

QString headerName(QStringView text) {
    const auto isBlank = [](QChar character) { return character == u' ' || character == u'\t'; };
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text.toString().toUpper();
}

QMap<QString, QString> attributeMap(const QXmlStreamAttributes& attributes) {
    QMap<QString, QString> map;
    for (const auto& attribute : attributes)
        map.insert(attribute.qualifiedName().toString(), attribute.value().toString());
    return map;
}

/// Hands one event to the parser; false ends the document as refused.
bool handleToken(QXmlStreamReader& reader, PlayerXMLParser& parser) {
    switch (reader.readNext()) {
    case QXmlStreamReader::DTD:
        return false;
    case QXmlStreamReader::StartElement:
        return parser.elementStarted(reader.name().toString(), attributeMap(reader.attributes())) ==
               PlayerXMLParser::Verdict::goOn;
    case QXmlStreamReader::EndElement:
        parser.elementEnded();
        return true;
    case QXmlStreamReader::Characters:
        parser.charactersFound(reader.text());
        return true;
    default:
        return true;
    }
}

/// The reader refuses every version but 1.0; what 1.1 has besides is characters that no player uses.
QString withVersionOneZero(const QString& text) {
    static const QRegularExpression declaration(
        QStringLiteral("^<\\?xml\\s+version\\s*=\\s*(['\"])1\\.1\\1"));
    const auto declared = declaration.match(text);
    auto known = text;
    if (declared.hasMatch())
        known[declared.capturedEnd() - 2] = u'0';
    return known;
}

std::optional<QString> trimmedChild(const PlayerXMLNode& node, const QString& name) {
    const auto child = node.child(name);
    return child ? std::optional(child->text.trimmed()) : std::nullopt;
}

/// Service type to control address; embedded devices count too, and a later service of the same type wins.
QHash<QString, QString> serviceTable(const PlayerXMLNode& device) {
    QHash<QString, QString> table;
    for (const auto& service : device.descendants(QStringLiteral("service"))) {
        const auto type = trimmedChild(*service, QStringLiteral("serviceType"));
        const auto control = trimmedChild(*service, QStringLiteral("controlURL"));
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
    static const QRegularExpression sub(QStringLiteral("\\bSub\\b"),
                                        QRegularExpression::CaseInsensitiveOption |
                                            QRegularExpression::UseUnicodePropertiesOption);
    return sub.match(model).hasMatch();
}

} // namespace

std::optional<QUrl> NetworkPlayerProtocol::ssdpLocation(const QString& datagram) {
    const auto all = lines(datagram);
    if (all.first().trimmed() != QLatin1String("HTTP/1.1 200 OK"))
        return std::nullopt;
    QHash<QString, QString> headers;
    for (const auto& line : all.sliced(1)) {
        const auto colon = line.indexOf(u':');
        if (colon >= 0)
            headers.insert(headerName(line.first(colon)), line.sliced(colon + 1).trimmed().toString());
    }
    if (headers.value(QStringLiteral("ST")) != QLatin1String(deviceType))
        return std::nullopt;
    const auto location = headers.value(QStringLiteral("LOCATION"));
    return carriesUserInfo(location) ? std::nullopt : playerAddress(location);
}

PlayerXMLNode::Pointer NetworkPlayerProtocol::xml(const QString& text) {
    if (text.contains(QLatin1String("<!DOCTYPE"), Qt::CaseInsensitive) || !isTamePlayerXML(text))
        return nullptr;
    // Reading text rather than bytes: an encoding that the document declares has no say.
    QXmlStreamReader reader(withVersionOneZero(text));
    PlayerXMLParser parser;
    while (!reader.atEnd()) {
        if (!handleToken(reader, parser))
            return nullptr;
    }
    return reader.hasError() ? nullptr : parser.root;
}

std::optional<SonosSpeaker> NetworkPlayerProtocol::speaker(const QString& description, const QUrl& url) {
    const auto root = xml(description);
    const auto device = root ? root->child(QStringLiteral("device")) : nullptr;
    if (!device || trimmedChild(*device, QStringLiteral("deviceType")) != QLatin1String(deviceType))
        return std::nullopt;
    const auto udn = trimmedChild(*device, QStringLiteral("UDN"));
    const QLatin1String prefix("uuid:");
    if (!udn || !udn->startsWith(prefix) || udn->size() <= prefix.size() || url.host().isEmpty())
        return std::nullopt;

    auto model = trimmedChild(*device, QStringLiteral("modelName"));
    if (!model)
        model = trimmedChild(*device, QStringLiteral("modelDescription"));
    SonosSpeaker speaker;
    speaker.id = udn->sliced(prefix.size());
    speaker.ip = url.host();
    speaker.model = model.value_or(QStringLiteral("Sonos"));
    auto roomName = trimmedChild(*device, QStringLiteral("roomName"));
    if (!roomName)
        roomName = trimmedChild(*device, QStringLiteral("friendlyName"));
    speaker.roomName = roomName.value_or(speaker.model);
    speaker.manufacturer = trimmedChild(*device, QStringLiteral("manufacturer"));
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
