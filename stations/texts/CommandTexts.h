// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/texts/Text.h"

/// What the command line says. Columns: English, Dutch, French, German.
namespace zofra::texts::command {

// Options that are wrong.
constexpr Text unknownOption{u"unknown option %1 (see --help)", u"onbekende optie %1 (zie --help)",
                             u"option inconnue %1 (voir --help)", u"unbekannte Option %1 (siehe --help)"};
constexpr Text takesNoValue{u"%1 takes no value", u"%1 neemt geen waarde", u"%1 ne prend pas de valeur",
                            u"%1 nimmt keinen Wert"};
constexpr Text needsValue{u"%1 needs a value", u"%1 heeft een waarde nodig", u"%1 a besoin d’une valeur",
                          u"%1 braucht einen Wert"};
constexpr Text noSuchStation{u"%1: no station \"%2\"; there are %3", u"%1: geen zender \"%2\"; er zijn %3",
                             u"%1 : pas de station « %2 » ; il y a %3", u"%1: kein Sender „%2“; es gibt %3"};
constexpr Text badVolume{u"--volume: \"%1\" is not a percentage such as 40, +5 or -5",
                         u"--volume: \"%1\" is geen percentage zoals 40, +5 of -5",
                         u"--volume : « %1 » n’est pas un pourcentage comme 40, +5 ou -5",
                         u"--volume: „%1“ ist kein Prozentwert wie 40, +5 oder -5"};
constexpr Text badTime{
    u"--stop-in: \"%1\" is not a time such as 45m or 1h30m (a day at most), nor off",
    u"--stop-in: \"%1\" is geen tijd zoals 45m of 1h30m (hoogstens een dag), noch off",
    u"--stop-in : « %1 » n’est ni une durée comme 45m ou 1h30m (un jour au plus) ni off",
    u"--stop-in: „%1“ ist weder eine Zeit wie 45m oder 1h30m (höchstens ein Tag) noch off"};
constexpr Text onOrOff{u"%1: \"%2\" is neither on nor off", u"%1: \"%2\" is on noch off",
                       u"%1 : « %2 » n’est ni on ni off", u"%1: „%2“ ist weder on noch off"};
constexpr Text onlyOneOf{u"only one of %1 can be asked for", u"van %1 kan er maar één gevraagd worden",
                         u"de %1 on ne peut demander qu’une seule", u"von %1 kann nur eines verlangt werden"};
constexpr Text goesWith{u"%1 goes with %2", u"%1 hoort bij %2", u"%1 va avec %2", u"%1 gehört zu %2"};
constexpr Text goesOnlyWith{u"%1 goes with %2 only", u"%1 gaat alleen samen met %2", u"%1 ne va qu’avec %2",
                            u"%1 geht nur mit %2 zusammen"};
constexpr Text goesWithNothing{u"%1 go with no other option", u"%1 gaan met geen andere optie samen",
                               u"%1 ne vont avec aucune autre option",
                               u"%1 gehen mit keiner anderen Option zusammen"};

// The running program.
constexpr Text notRunning{u"the program is not running", u"het programma loopt niet",
                          u"le programme ne tourne pas", u"das Programm läuft nicht"};
constexpr Text noAnswer{u"the running program does not answer", u"het lopende programma antwoordt niet",
                        u"le programme en marche ne répond pas", u"das laufende Programm antwortet nicht"};
constexpr Text noBus{u"there is no session bus to find the running program on",
                     u"er is geen sessiebus om het lopende programma op te vinden",
                     u"il n’y a pas de bus de session où trouver le programme en marche",
                     u"es gibt keinen Sitzungsbus, auf dem das laufende Programm zu finden wäre"};
constexpr Text noDisplay{u"there is no display to show the status item on (try --headless)",
                         u"er is geen beeldscherm om het statusitem op te tonen (probeer --headless)",
                         u"il n’y a pas d’affichage pour l’élément d’état (essayez --headless)",
                         u"es gibt keine Anzeige für das Statuselement (versuchen Sie --headless)"};
constexpr Text firstStartOnly{u"%1 can only be given to a first start; the program is already running",
                              u"%1 kan alleen bij een eerste start gegeven worden; het programma loopt al",
                              u"%1 ne peut être donné qu’au premier lancement ; le programme tourne déjà",
                              u"%1 kann nur beim ersten Start angegeben werden; das Programm läuft schon"};
constexpr Text refusedEntry{u"option \"%1\" is unknown or has a wrong value",
                            u"optie \"%1\" is onbekend of heeft een verkeerde waarde",
                            u"l’option « %1 » est inconnue ou sa valeur est fausse",
                            u"die Option „%1“ ist unbekannt oder hat einen falschen Wert"};
constexpr Text noSuchRoom{u"--output: there is no room \"%1\"", u"--output: er is geen kamer \"%1\"",
                          u"--output : il n’y a pas de pièce « %1 »", u"--output: es gibt keinen Raum „%1“"};
constexpr Text noHistory{u"no songs have been noted yet", u"er zijn nog geen nummers genoteerd",
                         u"aucun titre n’a encore été noté", u"es wurden noch keine Titel notiert"};

// `--help`.
constexpr Text usage{u"Usage: zofrazofra [OPTIONS]", u"Gebruik: zofrazofra [OPTIES]",
                     u"Usage : zofrazofra [OPTIONS]", u"Aufruf: zofrazofra [OPTIONEN]"};
constexpr Text purpose{u"A radio in the status bar. A second start hands its options to the running one; "
                       u"without options it shows the panel.",
                       u"Een radio in de statusbalk. Een tweede start geeft zijn opties aan de lopende door; "
                       u"zonder opties toont hij het paneel.",
                       u"Une radio dans la barre d’état. Un second lancement passe ses options à celle qui "
                       u"tourne ; sans options il montre le panneau.",
                       u"Ein Radio in der Statusleiste. Ein zweiter Start gibt seine Optionen an das "
                       u"laufende weiter; ohne Optionen zeigt er die Tafel."};
constexpr Text helpPlay{u"start playing, the given station if there is one",
                        u"beginnen te spelen, de gegeven zender als er een is",
                        u"commencer à jouer, la station donnée s’il y en a une",
                        u"Wiedergabe beginnen, mit dem angegebenen Sender, falls es einen gibt"};
constexpr Text helpOutput{
    u"where the sound goes; a room by title or id", u"waar het geluid heen gaat; een kamer met titel of id",
    u"où va le son ; une pièce par titre ou id", u"wohin der Ton geht; ein Raum mit Titel oder ID"};
constexpr Text helpStop{u"stop playing", u"stoppen met spelen", u"arrêter la lecture",
                        u"die Wiedergabe beenden"};
constexpr Text helpToggle{u"stop when it plays, else play", u"stoppen als er iets speelt, anders spelen",
                          u"arrêter si la radio joue, sinon lancer",
                          u"anhalten, wenn etwas läuft, sonst abspielen"};
constexpr Text helpStation{
    u"change the station; it plays on if it played", u"van zender veranderen; wat speelde, speelt door",
    u"changer de station ; ce qui jouait continue", u"den Sender wechseln; was lief, läuft weiter"};
constexpr Text helpVolume{u"set the volume in percent, raise or lower it",
                          u"het volume in procent instellen, verhogen of verlagen",
                          u"régler le volume en pour cent, le monter ou le baisser",
                          u"die Lautstärke in Prozent setzen, heben oder senken"};
constexpr Text helpStopIn{u"stop after a while, for example 45m or 1h30m; off takes it back",
                          u"na een tijd stoppen, bijvoorbeeld 45m of 1h30m; off trekt het in",
                          u"arrêter après un moment, par exemple 45m ou 1h30m ; off l’annule",
                          u"nach einer Weile anhalten, etwa 45m oder 1h30m; off nimmt es zurück"};
constexpr Text helpNotify{u"announce each new song by the desktop's messages, or do not",
                          u"elk nieuw nummer met een melding aankondigen, of niet",
                          u"annoncer chaque titre par une notification, ou non",
                          u"jeden neuen Titel mit einer Meldung ankündigen, oder nicht"};
constexpr Text helpSong{u"print the current song", u"het huidige nummer tonen", u"afficher le titre en cours",
                        u"den laufenden Titel ausgeben"};
constexpr Text helpFollow{u"print a line for each change, for status bars",
                          u"een regel per verandering tonen, voor statusbalken",
                          u"afficher une ligne par changement, pour les barres d’état",
                          u"bei jeder Änderung eine Zeile ausgeben, für Statusleisten"};
constexpr Text helpHistory{u"print the songs that were played", u"de gespeelde nummers tonen",
                           u"afficher les titres passés", u"die gespielten Titel ausgeben"};
constexpr Text helpJson{u"with --status, --follow, --history or --doctor: for scripts",
                        u"met --status, --follow, --history of --doctor: voor scripts",
                        u"avec --status, --follow, --history ou --doctor : pour les scripts",
                        u"mit --status, --follow, --history oder --doctor: für Skripte"};
constexpr Text helpEndpoints{
    u"service hosts over those of system and user (first start)",
    u"hosts van de diensten boven die van systeem en gebruiker (eerste start)",
    u"hôtes des services par-dessus ceux du système et de l’utilisateur (premier lancement)",
    u"Diensthosts über denen von System und Benutzer (erster Start)"};
constexpr Text helpNoDiscovery{u"do not look for networked speakers by itself (first start)",
                               u"niet uit zichzelf netwerkluidsprekers zoeken (eerste start)",
                               u"ne pas chercher de soi-même des enceintes réseau (premier lancement)",
                               u"nicht von selbst nach Netzwerklautsprechern suchen (erster Start)"};
constexpr Text helpHeadless{
    u"no status item, no window; changes go to standard output (first start)",
    u"geen statusitem, geen venster; wijzigingen gaan naar de standaarduitvoer (eerste start)",
    u"ni élément d’état ni fenêtre ; les changements vont à la sortie standard (premier lancement)",
    u"kein Statuselement, kein Fenster; Änderungen gehen auf die Standardausgabe (erster Start)"};
constexpr Text helpStatus{
    u"print the state of the running program", u"de toestand van het lopende programma tonen",
    u"afficher l’état du programme en marche", u"den Zustand des laufenden Programms ausgeben"};
constexpr Text helpDoctor{
    u"say what works, what does not, and what to do about it; goes with --endpoints, --no-discovery and "
    u"--headless",
    u"zeggen wat werkt, wat niet, en wat eraan te doen is; gaat samen met --endpoints, --no-discovery en "
    u"--headless",
    u"dire ce qui marche, ce qui ne marche pas et que faire ; va avec --endpoints, --no-discovery et "
    u"--headless",
    u"sagen, was geht, was nicht, und was zu tun ist; geht mit --endpoints, --no-discovery und --headless"};
constexpr Text helpQuit{u"end the running program", u"het lopende programma beëindigen",
                        u"arrêter le programme en marche", u"das laufende Programm beenden"};
constexpr Text helpVersion{u"print the version", u"de versie tonen", u"afficher la version",
                           u"die Version ausgeben"};
constexpr Text helpHelp{u"print this text", u"deze tekst tonen", u"afficher ce texte",
                        u"diesen Text ausgeben"};
constexpr Text helpStations{u"Stations: %1.", u"Zenders: %1.", u"Stations : %1.", u"Sender: %1."};
constexpr Text helpExit{
    u"Exit status: 0 fine, 1 failed at run time or a problem found, 2 bad option or bad endpoints file.",
    u"Afsluitstatus: 0 in orde, 1 mislukt tijdens het lopen of een probleem gevonden, 2 foute optie of fout "
    u"endpoints-bestand.",
    u"Code de sortie : 0 tout va bien, 1 échec en marche ou problème trouvé, 2 mauvaise option ou mauvais "
    u"fichier endpoints.",
    u"Rückgabewert: 0 in Ordnung, 1 im Lauf gescheitert oder ein Problem gefunden, 2 falsche Option oder "
    u"falsche Endpoints-Datei."};

} // namespace zofra::texts::command
