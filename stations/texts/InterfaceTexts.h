// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/texts/Text.h"

/// What menu, panel and status item say. Columns: English, Dutch, French, German.
namespace zofra::texts {

// What plays, and where.
constexpr Text loading{u"Loading...", u"Laden...", u"Chargement...", u"Lädt..."};
constexpr Text playing{u"Playing", u"Afspelen", u"Lecture en cours", u"Wiedergabe läuft"};
constexpr Text paused{u"Paused", u"Gepauzeerd", u"En pause", u"Pausiert"};
constexpr Text thisMac{u"This Mac", u"Deze Mac", u"Ce Mac", u"Dieser Mac"};
constexpr Text everywhere{u"Everywhere (All Rooms)", u"Overal (Alle kamers)", u"Partout (Toutes les pièces)",
                          u"Überall (Alle Räume)"};
constexpr Text synchronizationNote{
    u"Zofra plays independently; synchronization with Sonos is not guaranteed.",
    u"Zofra speelt onafhankelijk; synchronisatie met Sonos is niet gegarandeerd.",
    u"Zofra joue indépendamment ; la synchronisation avec Sonos n’est pas garantie.",
    u"Zofra spielt unabhängig; Synchronisation mit Sonos ist nicht garantiert."};
constexpr Text volume{u"Volume", u"Volume", u"Volume", u"Lautstärke"};

// Why there is no room to choose, and what to do.
constexpr Text accessDenied{u"No access to local network", u"Geen toegang tot lokaal netwerk",
                            u"Pas d'accès au réseau local", u"Kein Zugriff aufs lokale Netzwerk"};
constexpr Text scanning{u"Scanning…", u"Bezig met zoeken…", u"Recherche en cours…", u"Suche läuft …"};
constexpr Text nothingFound{u"No Sonos or Zofra devices found", u"Geen Sonos- of Zofra-apparaten gevonden",
                            u"Aucun appareil Sonos ou Zofra trouvé",
                            u"Keine Sonos- oder Zofra-Geräte gefunden"};
constexpr Text allowLocalNetwork{u"Allow Local Network …", u"Lokaal netwerk toestaan …",
                                 u"Autoriser le réseau local …", u"Lokales Netzwerk erlauben …"};

// The menu, from top to bottom.
constexpr Text stopRadio{u"Stop Radio", u"Radio stoppen", u"Arrêter la radio", u"Radio stoppen"};
constexpr Text playRadio{u"Play Radio", u"Radio afspelen", u"Lancer la radio", u"Radio abspielen"};
constexpr Text stopIcon{u"Stop", u"Stop", u"Arrêter", u"Stop"};
constexpr Text playIcon{u"Play", u"Play", u"Lecture", u"Play"};
constexpr Text stationMenu{u"Station (%1)", u"Zender (%1)", u"Station (%1)", u"Sender (%1)"};
constexpr Text stationIcon{u"Station", u"Zender", u"Station", u"Sender"};
constexpr Text outputMenu{u"Audio Output (%1)", u"Audio-uitvoer (%1)", u"Sortie audio (%1)",
                          u"Audio-Ausgabe (%1)"};
constexpr Text outputIcon{u"Output", u"Uitvoer", u"Sortie", u"Ausgabe"};
constexpr Text playEverywhere{u"Play Everywhere (All Rooms)", u"Overal afspelen (Alle kamers)",
                              u"Lire partout (Toutes les pièces)", u"Überall abspielen (Alle Räume)"};
constexpr Text searchItem{u"🔄 Search for Sonos and Zofra devices", u"🔄 Zoeken naar Sonos- en Zofra-apparaten",
                          u"🔄 Rechercher des appareils Sonos et Zofra",
                          u"🔄 Nach Sonos- und Zofra-Geräten suchen"};
constexpr Text volumeMenu{u"Volume (%1 %)", u"Volume (%1 %)", u"Volume (%1 %)", u"Lautstärke (%1 %)"};
constexpr Text mute{u"Mute (0 %)", u"Dempen (0 %)", u"Muet (0 %)", u"Stumm (0 %)"};
constexpr Text nowPlayingLine{u"Now Playing: %1", u"Nu bezig: %1", u"En cours : %1", u"Aktuell: %1"};
constexpr Text nowPlayingIcon{u"Now Playing", u"Nu bezig", u"En cours", u"Now Playing"};
constexpr Text upNextLine{u"Up Next: %1", u"Hierna: %1", u"À suivre : %1", u"Als Nächstes: %1"};
constexpr Text upNextIcon{u"Up Next", u"Hierna", u"Up Next", u"Up Next"};
constexpr Text about{u"About Zofra Zofra", u"Over Zofra Zofra", u"À propos de Zofra Zofra",
                     u"Über Zofra Zofra"};
constexpr Text quit{u"Quit Zofra Zofra", u"Zofra Zofra afsluiten", u"Quitter Zofra Zofra",
                    u"Zofra Zofra beenden"};

// The tooltip.
constexpr Text tooltipStation{u"Station: %1 (%2)", u"Zender: %1 (%2)", u"Station : %1 (%2)",
                              u"Sender: %1 (%2)"};
constexpr Text tooltipOutput{u"Output: %1", u"Uitvoer: %1", u"Sortie : %1", u"Ausgabe: %1"};
constexpr Text tooltipStatus{u"Status: %1"};

// The panel.
constexpr Text version{u"Version %1"};
constexpr Text languageName{u"English", u"Nederlands", u"Français", u"Deutsch"};
constexpr Text stationLabel{u"Station:", u"Zender:", u"Station :", u"Sender:"};
constexpr Text nowPlaying{u"Now Playing", u"Nu bezig", u"En cours", u"Jetzt läuft"};
constexpr Text upNext{u"Up Next", u"Hierna", u"À suivre", u"Als Nächstes"};
constexpr Text outputLabel{u"Output:", u"Uitvoer:", u"Sortie :", u"Ausgabe:"};
constexpr Text searchEntry{
    u"Search for Sonos and Zofra devices...", u"Zoeken naar Sonos- en Zofra-apparaten...",
    u"Rechercher des appareils Sonos et Zofra...", u"Sonos- und Zofra-Geräte suchen..."};
constexpr Text playMusic{u"Play", u"Muziek starten", u"Lancer la musique", u"Musik starten"};
constexpr Text stopMusic{u"Stop", u"Muziek stoppen", u"Arrêter la musique", u"Musik stoppen"};
constexpr Text volumePercent{u"%1 %"};
constexpr Text credit{u"Made with care by the Zofra Zofra team", u"Met zorg gemaakt door team Zofra Zofra",
                      u"Fait avec soin par l’équipe Zofra Zofra", u"Mit Sorgfalt vom Zofra-Zofra-Team"};
constexpr Text writeToUs{u"Write to us", u"Schrijf ons", u"Écrivez-nous", u"Schreiben Sie uns"};
constexpr Text startAutomatically{u"Start automatically", u"Automatisch opstarten", u"Lancer au démarrage",
                                  u"Automatisch starten"};
constexpr Text closeWindow{u"Close Window", u"Venster sluiten", u"Fermer la fenêtre", u"Fenster schließen"};

} // namespace zofra::texts
