// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/RoomCache.h"

#include "speakers/PlayerAddress.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace zofra {

namespace {

void put(QJsonObject& object, const QString& key, const std::optional<QString>& value) {
    if (value)
        object.insert(key, *value);
}

QJsonObject encodeSpeaker(const SonosSpeaker& speaker) {
    QJsonObject object{
        {QStringLiteral("id"), speaker.id},
        {QStringLiteral("ip"), speaker.ip},
        {QStringLiteral("roomName"), speaker.roomName},
        {QStringLiteral("model"), speaker.model},
        {QStringLiteral("isCoordinator"), speaker.isCoordinator},
        {QStringLiteral("isSub"), speaker.isSub},
        {QStringLiteral("isVisible"), speaker.isVisible},
    };
    put(object, QStringLiteral("groupCoordinatorId"), speaker.groupCoordinatorId);
    put(object, QStringLiteral("manufacturer"), speaker.manufacturer);
    put(object, QStringLiteral("modelName"), speaker.modelName);
    if (speaker.descriptionURL)
        object.insert(QStringLiteral("descriptionURL"),
                      QString::fromLatin1(speaker.descriptionURL->toEncoded(QUrl::FullyEncoded)));
    put(object, QStringLiteral("transportPath"), speaker.transportPath);
    put(object, QStringLiteral("renderingPath"), speaker.renderingPath);
    put(object, QStringLiteral("topologyPath"), speaker.topologyPath);
    return object;
}

/// Reads the fields of one JSON object and remembers whether any of them was unusable.
class Fields {
public:
    explicit Fields(const QJsonObject& object)
        : m_object(object) {}

    QString string(const QString& key) {
        const auto value = m_object.value(key);
        m_good = m_good && value.isString();
        return value.toString();
    }
    bool boolean(const QString& key) {
        const auto value = m_object.value(key);
        m_good = m_good && value.isBool();
        return value.toBool();
    }
    std::optional<QString> optionalString(const QString& key) {
        const auto value = m_object.value(key);
        if (value.isUndefined() || value.isNull())
            return std::nullopt;
        m_good = m_good && value.isString();
        return value.toString();
    }
    std::optional<QUrl> optionalUrl(const QString& key) {
        const auto text = optionalString(key);
        if (!text)
            return std::nullopt;
        QUrl url(*text, QUrl::StrictMode);
        m_good = m_good && url.isValid() && !url.isRelative();
        return url;
    }
    [[nodiscard]] bool areGood() const { return m_good; }

private:
    const QJsonObject& m_object;
    bool m_good = true;
};

std::optional<SonosSpeaker> decodeSpeaker(const QJsonValue& value) {
    if (!value.isObject())
        return std::nullopt;
    const auto object = value.toObject();
    Fields fields(object);
    SonosSpeaker speaker;
    speaker.id = fields.string(QStringLiteral("id"));
    speaker.ip = fields.string(QStringLiteral("ip"));
    speaker.roomName = fields.string(QStringLiteral("roomName"));
    speaker.model = fields.string(QStringLiteral("model"));
    speaker.isCoordinator = fields.boolean(QStringLiteral("isCoordinator"));
    speaker.isSub = fields.boolean(QStringLiteral("isSub"));
    speaker.isVisible = fields.boolean(QStringLiteral("isVisible"));
    speaker.groupCoordinatorId = fields.optionalString(QStringLiteral("groupCoordinatorId"));
    speaker.manufacturer = fields.optionalString(QStringLiteral("manufacturer"));
    speaker.modelName = fields.optionalString(QStringLiteral("modelName"));
    speaker.descriptionURL = fields.optionalUrl(QStringLiteral("descriptionURL"));
    speaker.transportPath = fields.optionalString(QStringLiteral("transportPath"));
    speaker.renderingPath = fields.optionalString(QStringLiteral("renderingPath"));
    speaker.topologyPath = fields.optionalString(QStringLiteral("topologyPath"));
    // The text can be edited by hand, so an address that is none must not get as far as a request.
    const bool hasAddress = speaker.descriptionURL || !usualDescriptionAddress(speaker.ip).host().isEmpty();
    return fields.areGood() && hasAddress ? std::optional(speaker) : std::nullopt;
}

std::optional<SonosRoom> decodeRoom(const QJsonValue& value) {
    const auto object = value.toObject();
    const auto name = object.value(QStringLiteral("name"));
    const auto coordinator = decodeSpeaker(object.value(QStringLiteral("coordinator")));
    const auto speakers = object.value(QStringLiteral("speakers"));
    if (!value.isObject() || !name.isString() || !coordinator || !speakers.isArray())
        return std::nullopt;
    SonosRoom room{name.toString(), *coordinator, {}};
    const auto array = speakers.toArray();
    for (const auto& element : array) {
        const auto speaker = decodeSpeaker(element);
        if (!speaker)
            return std::nullopt;
        room.speakers.append(*speaker);
    }
    return room;
}

} // namespace

QByteArray encodeRooms(const QList<SonosRoom>& rooms) {
    QJsonArray array;
    for (const auto& room : rooms) {
        QJsonArray speakers;
        for (const auto& speaker : room.speakers)
            speakers.append(encodeSpeaker(speaker));
        array.append(QJsonObject{
            {QStringLiteral("name"), room.name},
            {QStringLiteral("coordinator"), encodeSpeaker(room.coordinator)},
            {QStringLiteral("speakers"), speakers},
        });
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<QList<SonosRoom>> decodeRooms(const QByteArray& json) {
    const auto document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return std::nullopt;
    QList<SonosRoom> rooms;
    const auto array = document.array();
    for (const auto& element : array) {
        const auto room = decodeRoom(element);
        if (!room)
            return std::nullopt;
        rooms.append(*room);
    }
    return rooms;
}

} // namespace zofra
