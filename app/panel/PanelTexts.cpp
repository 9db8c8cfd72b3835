// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelTexts.h"

#include <array>

namespace zofra::panelText {

namespace {

/// One text in the order of AppLanguage.
using Texts = std::array<QStringView, allAppLanguages.size()>;

QString pick(const Texts& texts, AppLanguage language) {
    return texts.at(static_cast<size_t>(language)).toString();
}

} // namespace

QString version(const QString& version) {
    return QStringLiteral("Version ") + version;
}

QString languageName(AppLanguage language) {
    static constexpr Texts texts{u"English", u"Nederlands", u"Français", u"Deutsch"};
    return pick(texts, language);
}

QString stationLabel(AppLanguage language) {
    static constexpr Texts texts{u"Station:", u"Zender:", u"Station :", u"Sender:"};
    return pick(texts, language);
}

QString nowPlaying(AppLanguage language) {
    static constexpr Texts texts{u"Now Playing", u"Nu bezig", u"En cours", u"Jetzt läuft"};
    return pick(texts, language);
}

QString upNext(AppLanguage language) {
    static constexpr Texts texts{u"Up Next", u"Hierna", u"À suivre", u"Als Nächstes"};
    return pick(texts, language);
}

QString outputLabel(AppLanguage language) {
    static constexpr Texts texts{u"Output:", u"Uitvoer:", u"Sortie :", u"Ausgabe:"};
    return pick(texts, language);
}

QString thisMac(AppLanguage language) {
    static constexpr Texts texts{u"This Mac", u"Deze Mac", u"Ce Mac", u"Dieser Mac"};
    return pick(texts, language);
}

QString everywhere(AppLanguage language) {
    static constexpr Texts texts{u"Everywhere (All Rooms)", u"Overal (Alle kamers)",
                                 u"Partout (Toutes les pièces)", u"Überall (Alle Räume)"};
    return pick(texts, language);
}

QString search(AppLanguage language) {
    static constexpr Texts texts{
        u"Search for Sonos and Zofra devices...", u"Zoeken naar Sonos- en Zofra-apparaten...",
        u"Rechercher des appareils Sonos et Zofra...", u"Sonos- und Zofra-Geräte suchen..."};
    return pick(texts, language);
}

QString allowLocalNetwork(AppLanguage language) {
    static constexpr Texts texts{u"Allow Local Network …", u"Lokaal netwerk toestaan …",
                                 u"Autoriser le réseau local …", u"Lokales Netzwerk erlauben …"};
    return pick(texts, language);
}

QString synchronizationNote(AppLanguage language) {
    static constexpr Texts texts{
        u"Zofra plays independently; synchronization with Sonos is not guaranteed.",
        u"Zofra speelt onafhankelijk; synchronisatie met Sonos is niet gegarandeerd.",
        u"Zofra joue indépendamment ; la synchronisation avec Sonos n’est pas garantie.",
        u"Zofra spielt unabhängig; Synchronisation mit Sonos ist nicht garantiert."};
    return pick(texts, language);
}

QString play(AppLanguage language) {
    static constexpr Texts texts{u"Play", u"Muziek starten", u"Lancer la musique", u"Musik starten"};
    return pick(texts, language);
}

QString stop(AppLanguage language) {
    static constexpr Texts texts{u"Stop", u"Muziek stoppen", u"Arrêter la musique", u"Musik stoppen"};
    return pick(texts, language);
}

QString volume(AppLanguage language) {
    static constexpr Texts texts{u"Volume", u"Volume", u"Volume", u"Lautstärke"};
    return pick(texts, language);
}

QString volumePercent(int percent) {
    return QStringLiteral("%1 %").arg(percent);
}

QString credit(AppLanguage language) {
    static constexpr Texts texts{
        u"Made with care by the Zofra Zofra team", u"Met zorg gemaakt door team Zofra Zofra",
        u"Fait avec soin par l’équipe Zofra Zofra", u"Mit Sorgfalt vom Zofra-Zofra-Team"};
    return pick(texts, language);
}

QString writeToUs(AppLanguage language) {
    static constexpr Texts texts{u"Write to us", u"Schrijf ons", u"Écrivez-nous", u"Schreiben Sie uns"};
    return pick(texts, language);
}

QString startAutomatically(AppLanguage language) {
    static constexpr Texts texts{u"Start automatically", u"Automatisch opstarten", u"Lancer au démarrage",
                                 u"Automatisch starten"};
    return pick(texts, language);
}

QString closeWindow(AppLanguage language) {
    static constexpr Texts texts{u"Close Window", u"Venster sluiten", u"Fermer la fenêtre",
                                 u"Fenster schließen"};
    return pick(texts, language);
}

} // namespace zofra::panelText
