// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/texts/Text.h"

/// What menu, panel and status item say. Columns: English, Dutch, French, German.
namespace zofra::texts {

// What plays, and where.
inline constexpr Text loading{u"Loading...", u"Laden...", u"Chargement...", u"Lädt..."};
inline constexpr Text playing{u"Playing", u"Afspelen", u"Lecture en cours", u"Wiedergabe läuft"};
inline constexpr Text paused{u"Paused", u"Gepauzeerd", u"En pause", u"Pausiert"};
inline constexpr Text thisMac{u"This Mac", u"Deze Mac", u"Ce Mac", u"Dieser Mac"};
inline constexpr Text everywhere{u"Everywhere (All Rooms)", u"Overal (Alle kamers)",
                                 u"Partout (Toutes les pièces)", u"Überall (Alle Räume)"};
inline constexpr Text synchronizationNote{
    u"Zofra plays independently; synchronization with Sonos is not guaranteed.",
    u"Zofra speelt onafhankelijk; synchronisatie met Sonos is niet gegarandeerd.",
    u"Zofra joue indépendamment ; la synchronisation avec Sonos n’est pas garantie.",
    u"Zofra spielt unabhängig; Synchronisation mit Sonos ist nicht garantiert."};
inline constexpr Text volume{u"Volume", u"Volume", u"Volume", u"Lautstärke"};

// Why there is no room to choose, and what to do.
inline constexpr Text accessDenied{u"No access to local network", u"Geen toegang tot lokaal netwerk",
                                   u"Pas d'accès au réseau local", u"Kein Zugriff aufs lokale Netzwerk"};
inline constexpr Text scanning{u"Scanning…", u"Bezig met zoeken…", u"Recherche en cours…", u"Suche läuft …"};
inline constexpr Text nothingFound{
    u"No Sonos or Zofra devices found", u"Geen Sonos- of Zofra-apparaten gevonden",
    u"Aucun appareil Sonos ou Zofra trouvé", u"Keine Sonos- oder Zofra-Geräte gefunden"};
inline constexpr Text allowLocalNetwork{u"Allow Local Network …", u"Lokaal netwerk toestaan …",
                                        u"Autoriser le réseau local …", u"Lokales Netzwerk erlauben …"};

// The menu, from top to bottom.
inline constexpr Text stopRadio{u"Stop Radio", u"Radio stoppen", u"Arrêter la radio", u"Radio stoppen"};
inline constexpr Text playRadio{u"Play Radio", u"Radio afspelen", u"Lancer la radio", u"Radio abspielen"};
inline constexpr Text stopIcon{u"Stop", u"Stop", u"Arrêter", u"Stop"};
inline constexpr Text playIcon{u"Play", u"Play", u"Lecture", u"Play"};
inline constexpr Text stationMenu{u"Station (%1)", u"Zender (%1)", u"Station (%1)", u"Sender (%1)"};
inline constexpr Text stationIcon{u"Station", u"Zender", u"Station", u"Sender"};
inline constexpr Text outputMenu{u"Audio Output (%1)", u"Audio-uitvoer (%1)", u"Sortie audio (%1)",
                                 u"Audio-Ausgabe (%1)"};
inline constexpr Text outputIcon{u"Output", u"Uitvoer", u"Sortie", u"Ausgabe"};
inline constexpr Text playEverywhere{u"Play Everywhere (All Rooms)", u"Overal afspelen (Alle kamers)",
                                     u"Lire partout (Toutes les pièces)", u"Überall abspielen (Alle Räume)"};
inline constexpr Text searchItem{
    u"🔄 Search for Sonos and Zofra devices", u"🔄 Zoeken naar Sonos- en Zofra-apparaten",
    u"🔄 Rechercher des appareils Sonos et Zofra", u"🔄 Nach Sonos- und Zofra-Geräten suchen"};
inline constexpr Text volumeMenu{u"Volume (%1 %)", u"Volume (%1 %)", u"Volume (%1 %)", u"Lautstärke (%1 %)"};
inline constexpr Text mute{u"Mute (0 %)", u"Dempen (0 %)", u"Muet (0 %)", u"Stumm (0 %)"};
inline constexpr Text nowPlayingLine{u"Now Playing: %1", u"Nu bezig: %1", u"En cours : %1", u"Aktuell: %1"};
inline constexpr Text nowPlayingIcon{u"Now Playing", u"Nu bezig", u"En cours", u"Now Playing"};
inline constexpr Text upNextLine{u"Up Next: %1", u"Hierna: %1", u"À suivre : %1", u"Als Nächstes: %1"};
inline constexpr Text upNextIcon{u"Up Next", u"Hierna", u"Up Next", u"Up Next"};
inline constexpr Text about{u"About Zofra Zofra", u"Over Zofra Zofra", u"À propos de Zofra Zofra",
                            u"Über Zofra Zofra"};
inline constexpr Text quit{u"Quit Zofra Zofra", u"Zofra Zofra afsluiten", u"Quitter Zofra Zofra",
                           u"Zofra Zofra beenden"};

// The tooltip.
inline constexpr Text tooltipStation{u"Station: %1 (%2)", u"Zender: %1 (%2)", u"Station : %1 (%2)",
                                     u"Sender: %1 (%2)"};
inline constexpr Text tooltipOutput{u"Output: %1", u"Uitvoer: %1", u"Sortie : %1", u"Ausgabe: %1"};
inline constexpr Text tooltipStatus{u"Status: %1"};

// The panel.
inline constexpr Text version{u"Version %1"};
inline constexpr Text languageName{u"English", u"Nederlands", u"Français", u"Deutsch"};
inline constexpr Text stationLabel{u"Station:", u"Zender:", u"Station :", u"Sender:"};
inline constexpr Text nowPlaying{u"Now Playing", u"Nu bezig", u"En cours", u"Jetzt läuft"};
inline constexpr Text upNext{u"Up Next", u"Hierna", u"À suivre", u"Als Nächstes"};
inline constexpr Text outputLabel{u"Output:", u"Uitvoer:", u"Sortie :", u"Ausgabe:"};
inline constexpr Text searchEntry{
    u"Search for Sonos and Zofra devices...", u"Zoeken naar Sonos- en Zofra-apparaten...",
    u"Rechercher des appareils Sonos et Zofra...", u"Sonos- und Zofra-Geräte suchen..."};
inline constexpr Text playMusic{u"Play", u"Muziek starten", u"Lancer la musique", u"Musik starten"};
inline constexpr Text stopMusic{u"Stop", u"Muziek stoppen", u"Arrêter la musique", u"Musik stoppen"};
inline constexpr Text volumePercent{u"%1 %"};
inline constexpr Text credit{
    u"Made with care by the Zofra Zofra team", u"Met zorg gemaakt door team Zofra Zofra",
    u"Fait avec soin par l’équipe Zofra Zofra", u"Mit Sorgfalt vom Zofra-Zofra-Team"};
inline constexpr Text writeToUs{u"Write to us", u"Schrijf ons", u"Écrivez-nous", u"Schreiben Sie uns"};
inline constexpr Text startAutomatically{u"Start automatically", u"Automatisch opstarten",
                                         u"Lancer au démarrage", u"Automatisch starten"};
inline constexpr Text closeWindow{u"Close Window", u"Venster sluiten", u"Fermer la fenêtre",
                                  u"Fenster schließen"};

} // namespace zofra::texts
