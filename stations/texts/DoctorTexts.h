// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/texts/Text.h"

/// What `--doctor` says of each thing: findings, then what to do. Columns: English, Dutch, French, German.
namespace zofra::texts::doctor {

// The report.
constexpr Text problem{u"PROBLEM", u"PROBLEEM", u"PROBLÈME", u"PROBLEM"};
constexpr Text toDo{u"To do: %1", u"Te doen: %1", u"À faire : %1", u"Zu tun: %1"};
constexpr Text asAbove{u"as above.", u"zoals hierboven.", u"comme ci-dessus.", u"wie oben."};
constexpr Text everythingFine{u"Everything is fine.", u"Alles is in orde.", u"Tout va bien.",
                              u"Alles in Ordnung."};
constexpr Text oneProblem{u"1 problem.", u"1 probleem.", u"1 problème.", u"1 Problem."};
constexpr Text problems{u"%1 problems.", u"%1 problemen.", u"%1 problèmes.", u"%1 Probleme."};
constexpr Text andMore{u"and %1 more", u"en nog %1", u"et %1 de plus", u"und %1 weitere"};
constexpr Text logInAgain{u"log out and in again.", u"meld u af en weer aan.",
                          u"fermez la session et rouvrez-la.", u"melden Sie sich ab und wieder an."};

// Session and panel.
constexpr Text desktopSilent{u"the desktop does not answer in time", u"het bureaublad antwoordt niet op tijd",
                             u"le bureau ne répond pas à temps",
                             u"die Arbeitsfläche antwortet nicht rechtzeitig"};
constexpr Text noDisplayNeeded{
    u"no display is needed with --headless", u"met --headless is geen beeldscherm nodig",
    u"aucun affichage n’est nécessaire avec --headless", u"mit --headless wird keine Anzeige gebraucht"};
constexpr Text noDisplaySet{u"no display: neither DISPLAY nor WAYLAND_DISPLAY is set",
                            u"geen beeldscherm: DISPLAY noch WAYLAND_DISPLAY is ingesteld",
                            u"aucun affichage : ni DISPLAY ni WAYLAND_DISPLAY ne sont définis",
                            u"keine Anzeige: weder DISPLAY noch WAYLAND_DISPLAY ist gesetzt"};
constexpr Text noDisplayAnswers{u"no display answers (%1)", u"geen beeldscherm antwoordt (%1)",
                                u"aucun affichage ne répond (%1)", u"keine Anzeige antwortet (%1)"};
constexpr Text startInSession{
    u"start it in your desktop session, or without a display by --headless.",
    u"start het in uw bureaubladsessie, of zonder beeldscherm met --headless.",
    u"lancez-le dans votre session de bureau, ou sans affichage avec --headless.",
    u"starten Sie es in Ihrer Arbeitsflächensitzung, oder ohne Anzeige mit --headless."};
constexpr Text desktopUnknown{u"desktop unknown (XDG_CURRENT_DESKTOP is not set)",
                              u"bureaublad onbekend (XDG_CURRENT_DESKTOP is niet ingesteld)",
                              u"bureau inconnu (XDG_CURRENT_DESKTOP n’est pas défini)",
                              u"Arbeitsfläche unbekannt (XDG_CURRENT_DESKTOP ist nicht gesetzt)"};
constexpr Text otherWindows{u"another window system", u"een ander venstersysteem",
                            u"un autre système de fenêtres", u"ein anderes Fenstersystem"};
constexpr Text namelessPanel{u"a panel of unknown name", u"een paneel zonder bekende naam",
                             u"un tableau de bord au nom inconnu", u"eine Leiste unbekannten Namens"};
constexpr Text panelShows{u"%1 shows the button; mode %2, %3", u"%1 toont de knop; modus %2, %3",
                          u"%1 montre le bouton ; mode %2, %3", u"%1 zeigt den Knopf; Modus %2, %3"};
constexpr Text asSettingSays{u"as the setting tray/mode says", u"zoals de instelling tray/mode zegt",
                             u"comme le dit le réglage tray/mode", u"wie die Einstellung tray/mode sagt"};
constexpr Text passesBothClicks{u"for it passes both clicks on", u"want het geeft beide klikken door",
                                u"car il transmet les deux clics", u"denn sie reicht beide Klicks weiter"};
constexpr Text waylandMenus{u"for on Wayland only the panel can place a menu",
                            u"want op Wayland kan alleen het paneel een menu plaatsen",
                            u"car sous Wayland seul le tableau de bord peut placer un menu",
                            u"denn unter Wayland kann nur die Leiste ein Menü platzieren"};
constexpr Text drawsMenu{u"for it draws the menu itself", u"want het tekent het menu zelf",
                         u"car il dessine le menu lui-même", u"denn sie zeichnet das Menü selbst"};
constexpr Text oldTray{
    u"a tray of the old kind shows the button; mode xembed, for no panel takes status items",
    u"een systeemvak van het oude soort toont de knop; modus xembed, want geen paneel neemt statusitems aan",
    u"une zone de notification ancienne montre le bouton ; mode xembed, car aucun tableau de bord n’accepte "
    u"les éléments d’état",
    u"ein Systembereich alter Art zeigt den Knopf; Modus xembed, denn keine Leiste nimmt Statuselemente an"};
constexpr Text watchedButNotShown{u"%1 watches over status items, but no panel shows any; the radio is an "
                                  u"ordinary window instead (mode window)",
                                  u"%1 beheert statusitems, maar geen paneel toont ze; de radio is daarom "
                                  u"een gewoon venster (modus window)",
                                  u"%1 gère les éléments d’état, mais aucun tableau de bord n’en montre ; la "
                                  u"radio est donc une fenêtre ordinaire (mode window)",
                                  u"%1 verwaltet Statuselemente, aber keine Leiste zeigt welche; das Radio "
                                  u"ist deshalb ein gewöhnliches Fenster (Modus window)"};
constexpr Text notShown{
    u"no panel takes status items; the radio is an ordinary window instead (mode window)",
    u"geen paneel neemt statusitems aan; de radio is daarom een gewoon venster (modus window)",
    u"aucun tableau de bord n’accepte les éléments d’état ; la radio est donc une fenêtre ordinaire (mode "
    u"window)",
    u"keine Leiste nimmt Statuselemente an; das Radio ist deshalb ein gewöhnliches Fenster (Modus window)"};
constexpr Text installExtension{u"install and enable the AppIndicator extension (Debian: "
                                u"gnome-shell-extension-appindicator), then log in again.",
                                u"installeer de AppIndicator-extensie (Debian: "
                                u"gnome-shell-extension-appindicator), zet haar aan en meld u opnieuw aan.",
                                u"installez et activez l’extension AppIndicator (Debian : "
                                u"gnome-shell-extension-appindicator), puis rouvrez la session.",
                                u"installieren und aktivieren Sie die AppIndicator-Erweiterung (Debian: "
                                u"gnome-shell-extension-appindicator) und melden Sie sich neu an."};
constexpr Text addTray{
    u"add a status tray (\"Status Notifier\", \"System Tray\") to your panel, or start the panel again.",
    u"voeg een systeemvak (\"Status Notifier\", \"System Tray\") aan uw paneel toe, of start het paneel "
    u"opnieuw.",
    u"ajoutez une zone de notification (\"Status Notifier\", \"System Tray\") à votre tableau de bord, ou "
    u"relancez-le.",
    u"fügen Sie Ihrer Leiste einen Systembereich (\"Status Notifier\", \"System Tray\") hinzu, oder starten "
    u"Sie sie neu."};
constexpr Text startPanel{
    u"start a panel with a status tray, or add one to yours: \"System Tray\" in Plasma, \"Status Notifier\" "
    u"in LXQt, \"Status Tray\" in Xfce, \"tray\" in waybar.",
    u"start een paneel met een systeemvak, of voeg er een aan het uwe toe: \"System Tray\" in Plasma, "
    u"\"Status Notifier\" in LXQt, \"Status Tray\" in Xfce, \"tray\" in waybar.",
    u"lancez un tableau de bord avec une zone de notification, ou ajoutez-en une au vôtre : \"System Tray\" "
    u"dans Plasma, \"Status Notifier\" dans LXQt, \"Status Tray\" dans Xfce, \"tray\" dans waybar.",
    u"starten Sie eine Leiste mit Systembereich, oder fügen Sie Ihrer einen hinzu: \"System Tray\" in "
    u"Plasma, \"Status Notifier\" in LXQt, \"Status Tray\" in Xfce, \"tray\" in waybar."};
constexpr Text headlessShowsNone{
    u"not looked for: --headless shows no button", u"niet gezocht: --headless toont geen knop",
    u"non recherché : --headless ne montre pas de bouton", u"nicht gesucht: --headless zeigt keinen Knopf"};
constexpr Text noDisplayForPanel{
    u"not looked for: there is no display", u"niet gezocht: er is geen beeldscherm",
    u"non recherché : il n’y a pas d’affichage", u"nicht gesucht: es gibt keine Anzeige"};

// Bus and program.
constexpr Text busSilent{u"the session bus does not answer in time", u"de sessiebus antwoordt niet op tijd",
                         u"le bus de session ne répond pas à temps",
                         u"der Sitzungsbus antwortet nicht rechtzeitig"};
constexpr Text noBusSet{u"no session bus: DBUS_SESSION_BUS_ADDRESS is not set",
                        u"geen sessiebus: DBUS_SESSION_BUS_ADDRESS is niet ingesteld",
                        u"pas de bus de session : DBUS_SESSION_BUS_ADDRESS n’est pas défini",
                        u"kein Sitzungsbus: DBUS_SESSION_BUS_ADDRESS ist nicht gesetzt"};
constexpr Text noBusAnswers{u"no session bus answers at %1", u"geen sessiebus antwoordt op %1",
                            u"aucun bus de session ne répond à %1", u"kein Sitzungsbus antwortet unter %1"};
constexpr Text getABus{
    u"log in to a desktop session, or run the program by dbus-run-session: without a bus there are no media "
    u"keys, no button in the panel and no second start.",
    u"meld u aan bij een bureaubladsessie, of start het programma met dbus-run-session: zonder bus zijn er "
    u"geen mediatoetsen, geen knop in het paneel en geen tweede start.",
    u"ouvrez une session de bureau, ou lancez le programme par dbus-run-session : sans bus il n’y a ni "
    u"touches multimédia, ni bouton dans le tableau de bord, ni second lancement.",
    u"melden Sie sich an einer Arbeitsflächensitzung an, oder starten Sie das Programm mit dbus-run-session: "
    u"ohne Bus gibt es keine Medientasten, keinen Knopf in der Leiste und keinen zweiten Start."};
constexpr Text noMediaPlace{u"the running program has no place among the media players",
                            u"het lopende programma heeft geen plaats onder de mediaspelers",
                            u"le programme en marche n’a pas de place parmi les lecteurs multimédias",
                            u"das laufende Programm hat keinen Platz unter den Medienspielern"};
constexpr Text startAgainForMedia{
    u"end it (zofrazofra --quit) and start it again; another program may hold its name.",
    u"sluit het af (zofrazofra --quit) en start het opnieuw; een ander programma houdt misschien zijn naam.",
    u"arrêtez-le (zofrazofra --quit) et relancez-le ; un autre programme détient peut-être son nom.",
    u"beenden Sie es (zofrazofra --quit) und starten Sie es neu; vielleicht hält ein anderes Programm seinen "
    u"Namen."};
constexpr Text mediaKeysWork{u"the session bus answers; media keys reach the program",
                             u"de sessiebus antwoordt; mediatoetsen bereiken het programma",
                             u"le bus de session répond ; les touches multimédias atteignent le programme",
                             u"der Sitzungsbus antwortet; Medientasten erreichen das Programm"};
constexpr Text mediaKeysLater{
    u"the session bus answers; media keys work once the program runs",
    u"de sessiebus antwoordt; mediatoetsen werken zodra het programma loopt",
    u"le bus de session répond ; les touches multimédias marchent dès que le programme tourne",
    u"der Sitzungsbus antwortet; Medientasten wirken, sobald das Programm läuft"};
constexpr Text cannotBeAsked{
    u"cannot be asked without a session bus", u"kan zonder sessiebus niet gevraagd worden",
    u"ne peut être interrogé sans bus de session", u"kann ohne Sitzungsbus nicht gefragt werden"};
constexpr Text notRunning{u"not running", u"loopt niet", u"ne tourne pas", u"läuft nicht"};
constexpr Text process{u" (process %1)", u" (proces %1)", u" (processus %1)", u" (Prozess %1)"};
constexpr Text runningButSilent{u"running, but does not answer%1", u"loopt, maar antwoordt niet%1",
                                u"tourne, mais ne répond pas%1", u"läuft, antwortet aber nicht%1"};
constexpr Text killIt{
    u"end it: kill %1; then start it again.", u"beëindig het: kill %1; start het daarna opnieuw.",
    u"arrêtez-le : kill %1 ; puis relancez-le.", u"beenden Sie es: kill %1; starten Sie es dann neu."};
constexpr Text endIt{u"end it and start it again.", u"beëindig het en start het opnieuw.",
                     u"arrêtez-le et relancez-le.", u"beenden Sie es und starten Sie es neu."};
constexpr Text otherVersion{u"version %1 is running%2", u"versie %1 loopt%2", u"la version %1 tourne%2",
                            u"Version %1 läuft%2"};
constexpr Text restartUpdated{
    u"start it again, for it was updated: zofrazofra --quit, then zofrazofra.",
    u"start het opnieuw, want het is bijgewerkt: zofrazofra --quit, dan zofrazofra.",
    u"relancez-le, car il a été mis à jour : zofrazofra --quit, puis zofrazofra.",
    u"starten Sie es neu, denn es wurde aktualisiert: zofrazofra --quit, dann zofrazofra."};
constexpr Text networkDenied{
    u"running, but denied the local network%1", u"loopt, maar het lokale netwerk is hem ontzegd%1",
    u"tourne, mais le réseau local lui est refusé%1", u"läuft, aber das lokale Netzwerk ist ihm verwehrt%1"};
constexpr Text allowPorts{
    u"let it send UDP to port 1900 and TCP to port 1400 (firewall, sandbox).",
    u"laat het UDP naar poort 1900 en TCP naar poort 1400 sturen (firewall, sandbox).",
    u"laissez-le envoyer de l’UDP au port 1900 et du TCP au port 1400 (pare-feu, bac à sable).",
    u"lassen Sie es UDP an Port 1900 und TCP an Port 1400 senden (Firewall, Sandbox)."};
constexpr Text running{u"running%1: %2; mode %3", u"loopt%1: %2; modus %3", u"tourne%1 : %2 ; mode %3",
                       u"läuft%1: %2; Modus %3"};
constexpr Text waitingForSound{u"waiting for the sound of %1", u"wacht op het geluid van %1",
                               u"attend le son de %1", u"wartet auf den Ton von %1"};
constexpr Text playing{u"playing %1 (%2)", u"speelt %1 (%2)", u"joue %1 (%2)", u"spielt %1 (%2)"};
constexpr Text silent{u"silent", u"stil", u"silencieux", u"still"};

// Audio.
constexpr Text audioSilent{
    u"the audio server does not answer in time", u"de geluidsserver antwoordt niet op tijd",
    u"le serveur de son ne répond pas à temps", u"der Tonserver antwortet nicht rechtzeitig"};
constexpr Text restartAudio{
    u"start it again: systemctl --user restart pipewire pipewire-pulse (or pulseaudio -k).",
    u"start hem opnieuw: systemctl --user restart pipewire pipewire-pulse (of pulseaudio -k).",
    u"relancez-le : systemctl --user restart pipewire pipewire-pulse (ou pulseaudio -k).",
    u"starten Sie ihn neu: systemctl --user restart pipewire pipewire-pulse (oder pulseaudio -k)."};
constexpr Text alsaAlone{u"ALSA, without a sound server", u"ALSA, zonder geluidsserver",
                         u"ALSA, sans serveur de son", u"ALSA, ohne Tonserver"};
constexpr Text pulseOrPipeWire{u"PulseAudio or PipeWire", u"PulseAudio of PipeWire",
                               u"PulseAudio ou PipeWire", u"PulseAudio oder PipeWire"};
constexpr Text noDevice{u"the sound server answers but has no device that can be opened%1",
                        u"de geluidsserver antwoordt maar heeft geen apparaat dat geopend kan worden%1",
                        u"le serveur de son répond mais n’a aucun appareil que l’on puisse ouvrir%1",
                        u"der Tonserver antwortet, hat aber kein Gerät, das sich öffnen lässt%1"};
constexpr Text plugInOutput{u"plug in or switch on an output and choose it in the sound settings; \"pactl "
                            u"list short sinks\" shows what there is.",
                            u"sluit een uitgang aan of zet hem aan en kies hem in de geluidsinstellingen; "
                            u"\"pactl list short sinks\" toont wat er is.",
                            u"branchez ou allumez une sortie et choisissez-la dans les réglages du son ; "
                            u"\"pactl list short sinks\" montre ce qu’il y a.",
                            u"schließen Sie einen Ausgang an oder schalten Sie ihn ein und wählen Sie ihn in "
                            u"den Toneinstellungen; \"pactl list short sinks\" zeigt, was es gibt."};
constexpr Text noServer{u"no audio server answers%1", u"geen geluidsserver antwoordt%1",
                        u"aucun serveur de son ne répond%1", u"kein Tonserver antwortet%1"};
constexpr Text at{u" at %1", u" op %1", u" à %1", u" unter %1"};
constexpr Text startAudio{u"start it: systemctl --user start pipewire pipewire-pulse wireplumber (or "
                          u"pulseaudio --start). Network players play without one.",
                          u"start hem: systemctl --user start pipewire pipewire-pulse wireplumber (of "
                          u"pulseaudio --start). Netwerkspelers spelen zonder.",
                          u"lancez-le : systemctl --user start pipewire pipewire-pulse wireplumber (ou "
                          u"pulseaudio --start). Les lecteurs réseau jouent sans lui.",
                          u"starten Sie ihn: systemctl --user start pipewire pipewire-pulse wireplumber "
                          u"(oder pulseaudio --start). Netzwerkspieler spielen ohne ihn."};
constexpr Text installEngine{
    u"install libmpv 2 (Debian: libmpv2).", u"installeer libmpv 2 (Debian: libmpv2).",
    u"installez libmpv 2 (Debian : libmpv2).", u"installieren Sie libmpv 2 (Debian: libmpv2)."};

// Settings and endpoints.
constexpr Text diskSilent{u"the disk does not answer in time", u"de schijf antwoordt niet op tijd",
                          u"le disque ne répond pas à temps", u"der Datenträger antwortet nicht rechtzeitig"};
constexpr Text checkDisk{
    u"check the disk that holds your settings.", u"controleer de schijf met uw instellingen.",
    u"vérifiez le disque qui contient vos réglages.", u"prüfen Sie den Datenträger mit Ihren Einstellungen."};
constexpr Text cannotBeRead{u"%1 cannot be read: %2", u"%1 kan niet gelezen worden: %2",
                            u"%1 ne peut pas être lu : %2", u"%1 kann nicht gelesen werden: %2"};
constexpr Text makeReadable{
    u"make it readable: chmod u+rw %1; until then every start begins with the defaults.",
    u"maak het leesbaar: chmod u+rw %1; tot dan begint elke start met de standaardwaarden.",
    u"rendez-le lisible : chmod u+rw %1 ; d’ici là chaque lancement commence avec les valeurs par défaut.",
    u"machen Sie es lesbar: chmod u+rw %1; bis dahin beginnt jeder Start mit den Vorgaben."};
constexpr Text cannotBeWritten{u"%1 cannot be written: %2", u"%1 kan niet geschreven worden: %2",
                               u"%1 ne peut pas être écrit : %2", u"%1 kann nicht geschrieben werden: %2"};
constexpr Text makeRoom{
    u"make room on that disk (df -h); nothing that is stored is lost meanwhile.",
    u"maak ruimte op die schijf (df -h); wat bewaard is gaat intussen niet verloren.",
    u"faites de la place sur ce disque (df -h) ; rien de ce qui est enregistré ne se perd entre-temps.",
    u"schaffen Sie Platz auf diesem Datenträger (df -h); nichts Gespeichertes geht derweil verloren."};
constexpr Text makeWritable{
    u"make file and folder writable: chmod -R u+rwX %1; until then changes last until the program ends.",
    u"maak bestand en map schrijfbaar: chmod -R u+rwX %1; tot dan gelden wijzigingen tot het programma "
    u"eindigt.",
    u"rendez fichier et dossier inscriptibles : chmod -R u+rwX %1 ; d’ici là les changements durent jusqu’à "
    u"la fin du programme.",
    u"machen Sie Datei und Ordner beschreibbar: chmod -R u+rwX %1; bis dahin gelten Änderungen bis zum "
    u"Programmende."};
constexpr Text damaged{u"%1 is damaged: it holds lines that are no text",
                       u"%1 is beschadigd: het bevat regels die geen tekst zijn",
                       u"%1 est abîmé : il contient des lignes qui ne sont pas du texte",
                       u"%1 ist beschädigt: es enthält Zeilen, die kein Text sind"};
constexpr Text writeAnew{
    u"choose a station or volume: the file is then written anew, and kept as it was beside it (.damaged).",
    u"kies een zender of volume: het bestand wordt dan opnieuw geschreven en ernaast bewaard zoals het was "
    u"(.damaged).",
    u"choisissez une station ou un volume : le fichier est alors réécrit, et gardé tel quel à côté "
    u"(.damaged).",
    u"wählen Sie einen Sender oder eine Lautstärke: die Datei wird dann neu geschrieben und daneben "
    u"aufgehoben, wie sie war (.damaged)."};
constexpr Text notUsable{u"%1: not usable, so the default counts: %2",
                         u"%1: niet bruikbaar, dus geldt de standaardwaarde: %2",
                         u"%1 : inutilisable, donc la valeur par défaut compte : %2",
                         u"%1: nicht brauchbar, deshalb gilt die Vorgabe: %2"};
constexpr Text correctLines{
    u"correct or delete these lines, or choose the value anew in the menu.",
    u"verbeter of verwijder deze regels, of kies de waarde opnieuw in het menu.",
    u"corrigez ou supprimez ces lignes, ou choisissez à nouveau la valeur dans le menu.",
    u"berichtigen oder löschen Sie diese Zeilen, oder wählen Sie den Wert im Menü neu."};
constexpr Text notThereYet{u"%1 (not there yet: the defaults count)",
                           u"%1 (nog niet aanwezig: de standaardwaarden gelden)",
                           u"%1 (pas encore là : les valeurs par défaut comptent)",
                           u"%1 (noch nicht vorhanden: die Vorgaben gelten)"};
constexpr Text correctLine{
    u"correct or delete that line; /etc/xdg/zofrazofra/endpoints.ini explains every key.",
    u"verbeter of verwijder die regel; /etc/xdg/zofrazofra/endpoints.ini verklaart elke sleutel.",
    u"corrigez ou supprimez cette ligne ; /etc/xdg/zofrazofra/endpoints.ini explique chaque clé.",
    u"berichtigen oder löschen Sie diese Zeile; /etc/xdg/zofrazofra/endpoints.ini erklärt jeden Schlüssel."};
constexpr Text builtInHosts{u"no file: the built-in hosts", u"geen bestand: de ingebouwde hosts",
                            u"aucun fichier : les hôtes intégrés", u"keine Datei: die eingebauten Hosts"};

// Hosts.
constexpr Text installCurl{
    u"install libcurl 4 (Debian: libcurl4).", u"installeer libcurl 4 (Debian: libcurl4).",
    u"installez libcurl 4 (Debian : libcurl4).", u"installieren Sie libcurl 4 (Debian: libcurl4)."};
constexpr Text hostsNotAsked{u"not asked: first the endpoints file has to be right",
                             u"niet gevraagd: eerst moet het endpoints-bestand kloppen",
                             u"non interrogés : il faut d’abord que le fichier endpoints soit juste",
                             u"nicht gefragt: zuerst muss die Endpoints-Datei stimmen"};
constexpr Text hostNotAsked{u"%1: not asked", u"%1: niet gevraagd", u"%1 : non interrogé",
                            u"%1: nicht gefragt"};
constexpr Text hostFine{u"%1: name, TLS, answer in %2 ms", u"%1: naam, TLS, antwoord in %2 ms",
                        u"%1 : nom, TLS, réponse en %2 ms", u"%1: Name, TLS, Antwort in %2 ms"};
constexpr Text noAnswerInTime{u"no answer in time", u"geen antwoord op tijd", u"pas de réponse à temps",
                              u"keine Antwort rechtzeitig"};
constexpr Text checkNameServer{
    u"check the network connection and its name server (/etc/resolv.conf).",
    u"controleer de netwerkverbinding en haar naamserver (/etc/resolv.conf).",
    u"vérifiez la connexion réseau et son serveur de noms (/etc/resolv.conf).",
    u"prüfen Sie die Netzwerkverbindung und ihren Namensserver (/etc/resolv.conf)."};
constexpr Text placeholder{u"is a placeholder: this host has to be set",
                           u"is een plaatshouder: deze host moet ingesteld worden",
                           u"est un texte provisoire : il faut définir cet hôte",
                           u"ist ein Platzhalter: dieser Host muss gesetzt werden"};
constexpr Text setHosts{u"put the station group's servers into ~/.config/zofrazofra/endpoints.ini; "
                        u"/etc/xdg/zofrazofra/endpoints.ini explains every key.",
                        u"zet de servers van de zendergroep in ~/.config/zofrazofra/endpoints.ini; "
                        u"/etc/xdg/zofrazofra/endpoints.ini verklaart elke sleutel.",
                        u"mettez les serveurs du groupe de stations dans ~/.config/zofrazofra/endpoints.ini "
                        u"; /etc/xdg/zofrazofra/endpoints.ini explique chaque clé.",
                        u"tragen Sie die Server der Sendergruppe in ~/.config/zofrazofra/endpoints.ini ein; "
                        u"/etc/xdg/zofrazofra/endpoints.ini erklärt jeden Schlüssel."};
constexpr Text nameServerSilent{u"the name server does not answer", u"de naamserver antwoordt niet",
                                u"le serveur de noms ne répond pas", u"der Namensserver antwortet nicht"};
constexpr Text nameUnknown{u"the name cannot be resolved", u"de naam kan niet opgezocht worden",
                           u"le nom ne peut pas être résolu", u"der Name lässt sich nicht auflösen"};
constexpr Text checkNameOrHost{
    u"check the network connection and its name server (/etc/resolv.conf); if other names work, the host in "
    u"endpoints.ini is wrong.",
    u"controleer de netwerkverbinding en haar naamserver (/etc/resolv.conf); als andere namen werken, is de "
    u"host in endpoints.ini fout.",
    u"vérifiez la connexion réseau et son serveur de noms (/etc/resolv.conf) ; si d’autres noms marchent, "
    u"l’hôte dans endpoints.ini est faux.",
    u"prüfen Sie die Netzwerkverbindung und ihren Namensserver (/etc/resolv.conf); gehen andere Namen, ist "
    u"der Host in endpoints.ini falsch."};
constexpr Text refusedHere{u"this computer refuses the connection%1",
                           u"deze computer weigert de verbinding%1", u"cet ordinateur refuse la connexion%1",
                           u"dieser Computer verweigert die Verbindung%1"};
constexpr Text allowOutgoing{u"allow outgoing connections to TCP port 443 in the firewall.",
                             u"sta in de firewall uitgaande verbindingen naar TCP-poort 443 toe.",
                             u"autorisez dans le pare-feu les connexions sortantes vers le port TCP 443.",
                             u"erlauben Sie in der Firewall ausgehende Verbindungen zu TCP-Port 443."};
constexpr Text noWay{u"there is no way to it%1", u"er is geen weg naartoe%1", u"aucun chemin n’y mène%1",
                     u"es führt kein Weg dorthin%1"};
constexpr Text checkCable{
    u"check cable or Wi-Fi, and the router.", u"controleer kabel of wifi, en de router.",
    u"vérifiez le câble ou le Wi-Fi, et le routeur.", u"prüfen Sie Kabel oder WLAN, und den Router."};
constexpr Text noConnectionInTime{u"takes no connection in time", u"neemt geen verbinding op tijd aan",
                                  u"n’accepte aucune connexion à temps",
                                  u"nimmt rechtzeitig keine Verbindung an"};
constexpr Text checkFirewall{
    u"check the network connection; a firewall may drop TCP port 443.",
    u"controleer de netwerkverbinding; misschien laat een firewall TCP-poort 443 vallen.",
    u"vérifiez la connexion réseau ; un pare-feu bloque peut-être le port TCP 443.",
    u"prüfen Sie die Netzwerkverbindung; vielleicht verwirft eine Firewall TCP-Port 443."};
constexpr Text refusesConnections{u"refuses connections", u"weigert verbindingen", u"refuse les connexions",
                                  u"lehnt Verbindungen ab"};
constexpr Text serverDown{
    u"the server is down: try again later. If it stays so, set another host in endpoints.ini.",
    u"de server is buiten dienst: probeer het later opnieuw. Blijft dat zo, zet dan een andere host in "
    u"endpoints.ini.",
    u"le serveur est en panne : réessayez plus tard. Si cela dure, mettez un autre hôte dans endpoints.ini.",
    u"der Server ist außer Betrieb: versuchen Sie es später wieder. Bleibt es so, setzen Sie einen anderen "
    u"Host in endpoints.ini."};
constexpr Text badCertificate{u"its certificate is not good%1", u"zijn certificaat deugt niet%1",
                              u"son certificat n’est pas bon%1", u"sein Zertifikat ist nicht gut%1"};
constexpr Text checkClock{
    u"check this computer's date and time; if they are right, the server's owner has to renew it.",
    u"controleer datum en tijd van deze computer; kloppen ze, dan moet de eigenaar van de server het "
    u"vernieuwen.",
    u"vérifiez la date et l’heure de cet ordinateur ; si elles sont justes, c’est au propriétaire du serveur "
    u"de le renouveler.",
    u"prüfen Sie Datum und Uhrzeit dieses Computers; stimmen sie, muss der Eigentümer des Servers es "
    u"erneuern."};
constexpr Text otherHostAnswers{u"check %1: another host than the one you mean may answer.",
                                u"controleer %1: misschien antwoordt een andere host dan u bedoelt.",
                                u"vérifiez %1 : un autre hôte que celui que vous voulez répond peut-être.",
                                u"prüfen Sie %1: vielleicht antwortet ein anderer Host als der gemeinte."};
constexpr Text inEndpoints{u"%1 in endpoints.ini", u"%1 in endpoints.ini", u"%1 dans endpoints.ini",
                           u"%1 in endpoints.ini"};
constexpr Text andOthers{u"%1 and others", u"%1 en andere", u"%1 et d’autres", u"%1 und andere"};
constexpr Text installAuthorities{
    u"install ca-certificates; log in where the network wants that; name an authority of your own as "
    u"extra_ca in endpoints.ini.",
    u"installeer ca-certificates; meld u aan waar het netwerk dat wil; noem een eigen autoriteit als "
    u"extra_ca in endpoints.ini.",
    u"installez ca-certificates ; identifiez-vous là où le réseau le veut ; nommez une autorité à vous comme "
    u"extra_ca dans endpoints.ini.",
    u"installieren Sie ca-certificates; melden Sie sich an, wo das Netz das will; nennen Sie eine eigene "
    u"Zertifizierungsstelle als extra_ca in endpoints.ini."};
constexpr Text silentTls{
    u"takes the connection, then says nothing (TLS)", u"neemt de verbinding aan en zegt dan niets (TLS)",
    u"accepte la connexion, puis ne dit rien (TLS)", u"nimmt die Verbindung an und sagt dann nichts (TLS)"};
constexpr Text somethingHangs{u"the server or something on the way hangs: try again later.",
                              u"de server of iets onderweg hangt: probeer het later opnieuw.",
                              u"le serveur ou quelque chose en chemin est bloqué : réessayez plus tard.",
                              u"der Server oder etwas auf dem Weg hängt: versuchen Sie es später wieder."};
constexpr Text noSecureConnection{u"no secure connection%1", u"geen beveiligde verbinding%1",
                                  u"pas de connexion sûre%1", u"keine sichere Verbindung%1"};
constexpr Text tlsCutOff{
    u"the server or something on the way cuts TLS off: try again later, or from another network.",
    u"de server of iets onderweg kapt TLS af: probeer het later opnieuw, of vanuit een ander netwerk.",
    u"le serveur ou quelque chose en chemin coupe TLS : réessayez plus tard, ou d’un autre réseau.",
    u"der Server oder etwas auf dem Weg kappt TLS: versuchen Sie es später wieder, oder aus einem anderen "
    u"Netz."};
constexpr Text noStream{u"does not have the stream (HTTP 404)", u"heeft de stream niet (HTTP 404)",
                        u"n’a pas le flux (HTTP 404)", u"hat den Stream nicht (HTTP 404)"};
constexpr Text offAir{u"the station is off the air there: try again later, or check %1.",
                      u"de zender is daar uit de lucht: probeer het later opnieuw, of controleer %1.",
                      u"la station n’y émet pas : réessayez plus tard, ou vérifiez %1.",
                      u"der Sender sendet dort nicht: versuchen Sie es später wieder, oder prüfen Sie %1."};
constexpr Text answersHttp{u"answers HTTP %1", u"antwoordt HTTP %1", u"répond HTTP %1", u"antwortet HTTP %1"};
constexpr Text serviceFaultCheck{
    u"the service has a fault: try again later. If it stays so, check %1.",
    u"de dienst heeft een fout: probeer het later opnieuw. Blijft dat zo, controleer dan %1.",
    u"le service a une panne : réessayez plus tard. Si cela dure, vérifiez %1.",
    u"der Dienst hat einen Fehler: versuchen Sie es später wieder. Bleibt es so, prüfen Sie %1."};
constexpr Text serviceFault{u"the service has a fault: try again later.",
                            u"de dienst heeft een fout: probeer het later opnieuw.",
                            u"le service a une panne : réessayez plus tard.",
                            u"der Dienst hat einen Fehler: versuchen Sie es später wieder."};
constexpr Text pageInstead{u"a web page answers in its place", u"in zijn plaats antwoordt een webpagina",
                           u"une page web répond à sa place", u"an seiner Stelle antwortet eine Webseite"};
constexpr Text wrongAnswer{u"answers, but not what it should", u"antwoordt, maar niet wat het moet",
                           u"répond, mais pas ce qu’il faut", u"antwortet, aber nicht, was er soll"};
constexpr Text logInToNetwork{
    u"log in where the network wants that (open any page in a browser), or check %1.",
    u"meld u aan waar het netwerk dat wil (open een pagina in een browser), of controleer %1.",
    u"identifiez-vous là où le réseau le veut (ouvrez une page dans un navigateur), ou vérifiez %1.",
    u"melden Sie sich an, wo das Netz das will (öffnen Sie eine Seite im Browser), oder prüfen Sie %1."};
constexpr Text silentRequest{u"takes the request, then says nothing", u"neemt de vraag aan en zegt dan niets",
                             u"accepte la demande, puis ne dit rien",
                             u"nimmt die Anfrage an und sagt dann nichts"};
constexpr Text endsUnanswered{u"ends the connection without an answer%1",
                              u"verbreekt de verbinding zonder antwoord%1",
                              u"ferme la connexion sans réponse%1", u"beendet die Verbindung ohne Antwort%1"};
constexpr Text socketSilent{u"the socket service says nothing", u"de socketdienst zegt niets",
                            u"le service de socket ne dit rien", u"der Socket-Dienst sagt nichts"};
constexpr Text socketRefuses{
    u"the socket service does not let us in (%1)", u"de socketdienst laat ons niet binnen (%1)",
    u"le service de socket ne nous laisse pas entrer (%1)", u"der Socket-Dienst lässt uns nicht ein (%1)"};
constexpr Text noOpenFrame{u"it begins with something else than an open frame",
                           u"hij begint met iets anders dan een open-frame",
                           u"il commence par autre chose qu’une trame d’ouverture",
                           u"er beginnt mit etwas anderem als einem Open-Frame"};
constexpr Text polledMeanwhile{
    u"song texts come from the on-air service meanwhile, every 15 s; try again later, or check %1.",
    u"de liedteksten komen intussen van de on-air-dienst, om de 15 s; probeer het later opnieuw, of "
    u"controleer %1.",
    u"les titres viennent entre-temps du service on-air, toutes les 15 s ; réessayez plus tard, ou vérifiez "
    u"%1.",
    u"die Titel kommen derweil vom On-Air-Dienst, alle 15 s; versuchen Sie es später wieder, oder prüfen Sie "
    u"%1."};

// Network and players.
constexpr Text searchRefused{
    u"%1: this computer refuses the search (%2)", u"%1: deze computer weigert het zoeken (%2)",
    u"%1 : cet ordinateur refuse la recherche (%2)", u"%1: dieser Computer verweigert die Suche (%2)"};
constexpr Text openFirewall{u"allow outgoing UDP to port 1900 and TCP to port 1400, and incoming UDP from "
                            u"the local network, in this computer's firewall.",
                            u"sta in de firewall van deze computer uitgaand UDP naar poort 1900 en TCP naar "
                            u"poort 1400 toe, en inkomend UDP van het lokale netwerk.",
                            u"autorisez dans le pare-feu de cet ordinateur l’UDP sortant vers le port 1900 "
                            u"et le TCP vers le port 1400, et l’UDP entrant du réseau local.",
                            u"erlauben Sie in der Firewall dieses Computers ausgehendes UDP zu Port 1900 und "
                            u"TCP zu Port 1400 sowie eingehendes UDP aus dem lokalen Netzwerk."};
constexpr Text multicastRefused{u"%1: multicast is blocked (%2), broadcast is not",
                                u"%1: multicast is geblokkeerd (%2), broadcast niet",
                                u"%1 : le multicast est bloqué (%2), pas le broadcast",
                                u"%1: Multicast ist gesperrt (%2), Broadcast nicht"};
constexpr Text allowMulticast{
    u"allow UDP to 239.255.255.250 port 1900 in the firewall, and give 224.0.0.0/4 a route.",
    u"sta in de firewall UDP naar 239.255.255.250 poort 1900 toe, en geef 224.0.0.0/4 een route.",
    u"autorisez dans le pare-feu l’UDP vers 239.255.255.250 port 1900, et donnez une route à 224.0.0.0/4.",
    u"erlauben Sie in der Firewall UDP zu 239.255.255.250 Port 1900, und geben Sie 224.0.0.0/4 eine Route."};
constexpr Text multicastLost{
    u"%1: multicast is blocked: players are there but do not answer the search",
    u"%1: multicast is geblokkeerd: er zijn spelers maar ze antwoorden niet op het zoeken",
    u"%1 : le multicast est bloqué : des lecteurs sont là mais ne répondent pas à la recherche",
    u"%1: Multicast ist gesperrt: Spieler sind da, antworten aber nicht auf die Suche"};
constexpr Text passMulticast{
    u"allow incoming UDP from the local network in this computer's firewall, and let router and access point "
    u"pass multicast (IGMP snooping, client isolation).",
    u"sta in de firewall van deze computer inkomend UDP van het lokale netwerk toe, en laat router en "
    u"accesspoint multicast doorgeven (IGMP-snooping, client-isolatie).",
    u"autorisez dans le pare-feu de cet ordinateur l’UDP entrant du réseau local, et laissez le routeur et "
    u"le point d’accès transmettre le multicast (IGMP snooping, isolation des clients).",
    u"erlauben Sie in der Firewall dieses Computers eingehendes UDP aus dem lokalen Netzwerk, und lassen Sie "
    u"Router und Zugangspunkt Multicast weitergeben (IGMP-Snooping, Client-Isolation)."};
constexpr Text searchedOne{u"%1: searched, 1 answer", u"%1: gezocht, 1 antwoord",
                           u"%1 : recherche faite, 1 réponse", u"%1: gesucht, 1 Antwort"};
constexpr Text searched{u"%1: searched, %2 answers", u"%1: gezocht, %2 antwoorden",
                        u"%1 : recherche faite, %2 réponses", u"%1: gesucht, %2 Antworten"};
constexpr Text bySearch{u"%1 by the search", u"%1 door het zoeken", u"%1 par la recherche",
                        u"%1 durch die Suche"};
constexpr Text byScan{u"%1 by asking every address", u"%1 door elk adres te vragen",
                      u"%1 en interrogeant chaque adresse", u"%1 durch Fragen jeder Adresse"};
constexpr Text byTopology{u"%1 through other players", u"%1 via andere spelers", u"%1 par d’autres lecteurs",
                          u"%1 über andere Spieler"};
constexpr Text oneRoom{u"1 room: %1 (players: %2)", u"1 kamer: %1 (spelers: %2)",
                       u"1 pièce : %1 (lecteurs : %2)", u"1 Raum: %1 (Spieler: %2)"};
constexpr Text rooms{u"%3 rooms: %1 (players: %2)", u"%3 kamers: %1 (spelers: %2)",
                     u"%3 pièces : %1 (lecteurs : %2)", u"%3 Räume: %1 (Spieler: %2)"};
constexpr Text playersRefused{
    u"the local network is denied: this computer refuses to ask the players (%1)",
    u"het lokale netwerk is ontzegd: deze computer weigert de spelers te vragen (%1)",
    u"le réseau local est refusé : cet ordinateur refuse d’interroger les lecteurs (%1)",
    u"das lokale Netzwerk ist verwehrt: dieser Computer verweigert das Fragen der Spieler (%1)"};
constexpr Text noneSoFar{u"none found so far; the network is larger than the time for it",
                         u"nog geen gevonden; het netwerk is groter dan de tijd ervoor",
                         u"aucun trouvé jusqu’ici ; le réseau est plus grand que le temps donné",
                         u"noch keine gefunden; das Netz ist größer als die Zeit dafür"};
constexpr Text onePlayerSoFar{
    u"1 player by asking every address; not all were asked in time",
    u"1 speler door elk adres te vragen; niet alle konden op tijd gevraagd worden",
    u"1 lecteur en interrogeant chaque adresse ; toutes n’ont pu l’être à temps",
    u"1 Spieler durch Fragen jeder Adresse; nicht alle konnten rechtzeitig gefragt werden"};
constexpr Text playersSoFar{
    u"%1 players by asking every address; not all were asked in time",
    u"%1 spelers door elk adres te vragen; niet alle konden op tijd gevraagd worden",
    u"%1 lecteurs en interrogeant chaque adresse ; toutes n’ont pu l’être à temps",
    u"%1 Spieler durch Fragen jeder Adresse; nicht alle konnten rechtzeitig gefragt werden"};
constexpr Text noPlayers{u"none found, which is fine unless you have some",
                         u"geen gevonden, wat goed is tenzij u er hebt",
                         u"aucun trouvé, ce qui est bien sauf si vous en avez",
                         u"keine gefunden, was gut ist, wenn Sie keine haben"};
constexpr Text notSearched{u"not searched: --no-discovery", u"niet gezocht: --no-discovery",
                           u"non cherché : --no-discovery", u"nicht gesucht: --no-discovery"};
constexpr Text noInterface{u"no network interface is up", u"geen netwerkinterface is actief",
                           u"aucune interface réseau n’est active", u"keine Netzwerkschnittstelle ist aktiv"};
constexpr Text joinNetwork{
    u"plug in the cable or join a Wi-Fi; players are looked for over IPv4.",
    u"sluit de kabel aan of maak verbinding met wifi; spelers worden over IPv4 gezocht.",
    u"branchez le câble ou rejoignez un Wi-Fi ; les lecteurs sont cherchés en IPv4.",
    u"stecken Sie das Kabel ein oder treten Sie einem WLAN bei; Spieler werden über IPv4 gesucht."};

} // namespace zofra::texts::doctor
