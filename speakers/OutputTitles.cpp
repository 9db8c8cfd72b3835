// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/OutputTitles.h"

#include <algorithm>

namespace zofra {

namespace {

struct Texts {
    QString en;
    QString nl;
    QString fr;
    QString de;
};

QString in(AppLanguage language, const Texts& texts) {
    switch (language) {
    case AppLanguage::nl:
        return texts.nl;
    case AppLanguage::fr:
        return texts.fr;
    case AppLanguage::de:
        return texts.de;
    case AppLanguage::en:
        break;
    }
    return texts.en;
}

bool isOwn(const SonosSpeaker& speaker) {
    const auto names = [](const std::optional<QString>& text) {
        return text && (text->compare(QLatin1String("Zofra Zofra"), Qt::CaseInsensitive) == 0 ||
                        text->compare(QLatin1String("Zofra Pi Player"), Qt::CaseInsensitive) == 0);
    };
    return names(speaker.manufacturer) || names(speaker.modelName) || speaker.isZofra();
}

QString brand(const SonosRoom& room) {
    return isOwn(room.coordinator) ? QStringLiteral("Zofra") : QStringLiteral("Sonos");
}

/// Where the room's player is, unless another of these rooms is there, too: players are known apart by id
/// only.
QString distinguishingText(const SonosRoom& room, const QList<SonosRoom>& others) {
    const bool isShared = std::any_of(others.begin(), others.end(), [&room](const SonosRoom& other) {
        return other.coordinator.ip == room.coordinator.ip;
    });
    return isShared ? room.coordinator.id : room.coordinator.ip;
}

} // namespace

QString roomTitle(const SonosRoom& room, const QList<SonosRoom>& rooms) {
    QList<SonosRoom> sameName;
    std::copy_if(rooms.begin(), rooms.end(), std::back_inserter(sameName), [&room](const SonosRoom& other) {
        return other.id() != room.id() && other.name == room.name;
    });
    if (sameName.isEmpty())
        return room.name;
    QList<SonosRoom> sameBrand;
    std::copy_if(sameName.begin(), sameName.end(), std::back_inserter(sameBrand),
                 [&room](const SonosRoom& other) { return brand(other) == brand(room); });
    const QString title = room.name + QStringLiteral(" (") + brand(room) + u')';
    return sameBrand.isEmpty() ? title : title + QStringLiteral(" – ") + distinguishingText(room, sameBrand);
}

QString localTargetTitle(AppLanguage language) {
    return in(language, {QStringLiteral("This Mac"), QStringLiteral("Deze Mac"), QStringLiteral("Ce Mac"),
                         QStringLiteral("Dieser Mac")});
}

QString everywhereTitle(AppLanguage language) {
    return in(language,
              {QStringLiteral("Everywhere (All Rooms)"), QStringLiteral("Overal (Alle kamers)"),
               QStringLiteral("Partout (Toutes les pièces)"), QStringLiteral("Überall (Alle Räume)")});
}

QString accessDeniedText(AppLanguage language) {
    return in(language, {QStringLiteral("No access to local network"),
                         QStringLiteral("Geen toegang tot lokaal netwerk"),
                         QStringLiteral("Pas d'accès au réseau local"),
                         QStringLiteral("Kein Zugriff aufs lokale Netzwerk")});
}

QString scanningText(AppLanguage language) {
    return in(language, {QStringLiteral("Scanning…"), QStringLiteral("Bezig met zoeken…"),
                         QStringLiteral("Recherche en cours…"), QStringLiteral("Suche läuft …")});
}

QString nothingFoundText(AppLanguage language) {
    return in(language, {QStringLiteral("No Sonos or Zofra devices found"),
                         QStringLiteral("Geen Sonos- of Zofra-apparaten gevonden"),
                         QStringLiteral("Aucun appareil Sonos ou Zofra trouvé"),
                         QStringLiteral("Keine Sonos- oder Zofra-Geräte gefunden")});
}

} // namespace zofra
