// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StatusMenuTexts.h"

#include <array>

namespace zofra::menutexts {

namespace {

/// One text in English, Dutch, French and German: the order of the languages.
using Texts = std::array<const char16_t*, allAppLanguages.size()>;

QString pick(const Texts& texts, AppLanguage language) {
    return QString::fromUtf16(texts.at(static_cast<std::size_t>(language)));
}

} // namespace

QString playStop(bool isPlaying, AppLanguage language) {
    return isPlaying
               ? pick({u"Stop Radio", u"Radio stoppen", u"Arrêter la radio", u"Radio stoppen"}, language)
               : pick({u"Play Radio", u"Radio afspelen", u"Lancer la radio", u"Radio abspielen"}, language);
}

QString playStopIcon(bool isPlaying, AppLanguage language) {
    return isPlaying ? pick({u"Stop", u"Stop", u"Arrêter", u"Stop"}, language)
                     : pick({u"Play", u"Play", u"Lecture", u"Play"}, language);
}

QString stationIcon(AppLanguage language) {
    return pick({u"Station", u"Zender", u"Station", u"Sender"}, language);
}

QString outputIcon(AppLanguage language) {
    return pick({u"Output", u"Uitvoer", u"Sortie", u"Ausgabe"}, language);
}

QString thisComputer(AppLanguage language) {
    return pick({u"This Mac", u"Deze Mac", u"Ce Mac", u"Dieser Mac"}, language);
}

QString allowLocalNetwork(AppLanguage language) {
    return pick({u"Allow Local Network …", u"Lokaal netwerk toestaan …", u"Autoriser le réseau local …",
                 u"Lokales Netzwerk erlauben …"},
                language);
}

QString playEverywhere(AppLanguage language) {
    return pick({u"Play Everywhere (All Rooms)", u"Overal afspelen (Alle kamers)",
                 u"Lire partout (Toutes les pièces)", u"Überall abspielen (Alle Räume)"},
                language);
}

QString playEverywhereToolTip(AppLanguage language) {
    return pick({u"Zofra plays independently; synchronization with Sonos is not guaranteed.",
                 u"Zofra speelt onafhankelijk; synchronisatie met Sonos is niet gegarandeerd.",
                 u"Zofra joue indépendamment ; la synchronisation avec Sonos n’est pas garantie.",
                 u"Zofra spielt unabhängig; Synchronisation mit Sonos ist nicht garantiert."},
                language);
}

QString search(AppLanguage language) {
    return pick({u"🔄 Search for Sonos and Zofra devices", u"🔄 Zoeken naar Sonos- en Zofra-apparaten",
                 u"🔄 Rechercher des appareils Sonos et Zofra", u"🔄 Nach Sonos- und Zofra-Geräten suchen"},
                language);
}

QString mute(AppLanguage language) {
    return pick({u"Mute (0 %)", u"Dempen (0 %)", u"Muet (0 %)", u"Stumm (0 %)"}, language);
}

QString volumeIcon(AppLanguage language) {
    return pick({u"Volume", u"Volume", u"Volume", u"Lautstärke"}, language);
}

QString nowPlayingIcon(AppLanguage language) {
    return pick({u"Now Playing", u"Nu bezig", u"En cours", u"Now Playing"}, language);
}

QString upNextIcon(AppLanguage language) {
    return pick({u"Up Next", u"Hierna", u"Up Next", u"Up Next"}, language);
}

QString about(AppLanguage language) {
    return pick({u"About Zofra Zofra", u"Over Zofra Zofra", u"À propos de Zofra Zofra", u"Über Zofra Zofra"},
                language);
}

QString quit(AppLanguage language) {
    return pick(
        {u"Quit Zofra Zofra", u"Zofra Zofra afsluiten", u"Quitter Zofra Zofra", u"Zofra Zofra beenden"},
        language);
}

} // namespace zofra::menutexts
