// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/speakers/ManagerTest.h"

#include <chrono>

namespace zofra {
namespace {

using test::otherPlayer;
using test::ownPlayer;
using namespace std::chrono_literals;

const QString kitchen = QStringLiteral("Kitchen");
const QString cacheKey = QStringLiteral("cached_sonos_rooms");

SonosRoom roomOf(const SonosSpeaker& speaker) {
    return {speaker.roomName, speaker, {speaker}};
}

class SonosManagerTest : public test::ManagerTest {
protected:
    /// A manager that shows these rooms, from the cache.
    SonosManager& startWithRooms(const QList<SonosRoom>& rooms) {
        defaults.values[cacheKey] = encodeRooms(rooms);
        return start(true);
    }
    void setLanguage(AppLanguage language) { languages.setLanguage(language); }
};

TEST_F(SonosManagerTest, StartsEmptyHereAndSilent) {
    RadioStation::setSavedStation(defaults, RadioStation::joe);
    start(false);
    EXPECT_TRUE(manager->rooms.get().isEmpty());
    EXPECT_EQ(manager->activeTarget.get(), AudioOutputTarget::localMac());
    EXPECT_FALSE(manager->isSonosPlaying || manager->isScanning || manager->localNetworkDenied);
    EXPECT_EQ(manager->currentStation.get(), RadioStation::joe);
    EXPECT_EQ(manager->cacheKey, cacheKey);
}

TEST_F(SonosManagerTest, WithoutAutomaticDiscoveryIsInert) {
    defaults.values[cacheKey] = encodeRooms({roomOf(otherPlayer(QStringLiteral("A"), kitchen))});
    start(false);
    queue.advance(1h);
    tasks.runAll();
    EXPECT_TRUE(manager->rooms.get().isEmpty());
    EXPECT_EQ(defaults.reads, std::vector<QString>{QStringLiteral("zofra_selected_station")}) << "no cache";
    EXPECT_TRUE(defaults.writes.empty());
    EXPECT_TRUE(http.requests.empty());
    EXPECT_TRUE(queue.startedTimers().empty());
    EXPECT_EQ(network.listings(), 0);
}

TEST_F(SonosManagerTest, WithoutAutomaticDiscoveryStillSearchesWhenAskedButKeepsNothing) {
    house.players = {{1, {QStringLiteral("A"), kitchen}}};
    startWithHouse();
    EXPECT_EQ(manager->rooms.get().size(), 1);
    EXPECT_TRUE(defaults.writes.empty());
}

TEST_F(SonosManagerTest, ShowsTheCachedRoomsAtOnceWithoutTellingAnyone) {
    const QList<SonosRoom> cached{roomOf(otherPlayer(QStringLiteral("A"), kitchen))};
    startWithRooms(cached);
    EXPECT_EQ(manager->rooms.get(), cached);
    queue.drain();
    EXPECT_TRUE(updates.isEmpty());
}

TEST_F(SonosManagerTest, IgnoresAnUnreadableCache) {
    defaults.values[cacheKey] = QByteArray("[{}]");
    start(true);
    EXPECT_TRUE(manager->rooms.get().isEmpty());
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(SonosManagerTest, SearchesAtStartWithASubnetScanAndThenEveryMinuteWithout) {
    network.addInterface(QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), QStringLiteral("10.0.0.255"));
    network.scripts[QStringLiteral("10.0.0.2")].datagrams = {
        test::ssdpAnswer(test::descriptionUrl(1).toString())};
    house.players = {{1, {QStringLiteral("A"), kitchen}}};
    start(true);
    EXPECT_TRUE(manager->isScanning);
    EXPECT_EQ(queue.startedTimers(), std::vector<std::chrono::milliseconds>{60s});
    tasks.runAll();
    queue.drain();
    EXPECT_FALSE(manager->isScanning);
    EXPECT_EQ(http.requests.size(), 256U) << "254 probes, a description, a topology";
    http.requests.clear();
    queue.advance(59'999ms);
    EXPECT_EQ(tasks.waiting(), 0U);
    queue.advance(1ms);
    EXPECT_EQ(tasks.waiting(), 1U);
    tasks.runAll();
    EXPECT_EQ(http.requests.size(), 2U) << "the interface answered, so no scan";
    queue.advance(60s);
    EXPECT_EQ(tasks.waiting(), 1U) << "again and again";
}

TEST_F(SonosManagerTest, ASecondSearchWhileOneRunsIsDropped) {
    start(false);
    manager->discoverDevices(false);
    manager->discoverDevices(true);
    EXPECT_EQ(tasks.waiting(), 1U);
    tasks.runAll();
    EXPECT_TRUE(manager->isScanning) << "until the main queue's next turn";
    manager->discoverDevices(true);
    EXPECT_EQ(tasks.waiting(), 0U);
    queue.drain();
    EXPECT_FALSE(manager->isScanning);
    EXPECT_EQ(tasks.waiting(), 0U) << "dropped, not deferred";
    manager->discoverDevices(false);
    EXPECT_EQ(tasks.waiting(), 1U);
}

TEST_F(SonosManagerTest, TheTimersSearchDuringALongOneIsLost) {
    start(true);
    queue.advance(180s);
    EXPECT_EQ(tasks.waiting(), 1U);
    tasks.runAll();
    queue.drain();
    EXPECT_EQ(tasks.waiting(), 0U);
}

TEST_F(SonosManagerTest, WhatIsFoundIsShownKeptAndTold) {
    network.addInterface(QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), QString());
    network.scripts[QStringLiteral("10.0.0.2")].datagrams = {
        test::ssdpAnswer(test::descriptionUrl(1).toString())};
    house.players = {{1, {QStringLiteral("A"), kitchen}}};
    start(true);
    tasks.runAll();
    EXPECT_TRUE(manager->rooms.get().isEmpty()) << "not before the main queue's next turn";
    queue.drain();
    ASSERT_EQ(manager->rooms.get().size(), 1);
    EXPECT_EQ(manager->rooms.get()[0].id(), QStringLiteral("A"));
    EXPECT_EQ(updates, QList<QList<SonosRoom>>{manager->rooms.get()});
    EXPECT_EQ(defaults.writes, std::vector<QString>{cacheKey});
    EXPECT_EQ(decodeRooms(defaults.values[cacheKey].toByteArray()), manager->rooms.get());
}

TEST_F(SonosManagerTest, RoomsAreSetThenKeptThenToldAndTheRunEndsAfterThat) {
    network.addInterface(QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), QString());
    network.scripts[QStringLiteral("10.0.0.2")].datagrams = {
        test::ssdpAnswer(test::descriptionUrl(1).toString())};
    house.players = {{1, {QStringLiteral("A"), kitchen}}};
    start(true);
    int told = 0;
    manager->onRoomsUpdated = [&](const QList<SonosRoom>& rooms) {
        ++told;
        EXPECT_EQ(manager->rooms.get(), rooms);
        EXPECT_EQ(decodeRooms(defaults.values[cacheKey].toByteArray()), rooms);
        EXPECT_TRUE(manager->isScanning);
    };
    tasks.runAll();
    queue.drain();
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(manager->isScanning);
}

TEST_F(SonosManagerTest, ARunThatFindsNothingLeavesRoomsAndCache) {
    const QList<SonosRoom> cached{roomOf(otherPlayer(QStringLiteral("A"), kitchen))};
    startWithRooms(cached);
    tasks.runAll();
    queue.drain();
    EXPECT_EQ(manager->rooms.get(), cached);
    EXPECT_TRUE(updates.isEmpty());
    EXPECT_TRUE(defaults.writes.empty());
    EXPECT_EQ(log.lines.back(), QStringLiteral("[Sonos] Keine erreichbaren Netzwerk-Player gefunden."));
}

TEST_F(SonosManagerTest, ChangesAreAnnouncedBeforeTheyTakeEffect) {
    start(false);
    QList<bool> seen;
    const auto token = manager->observe([&] { seen.append(manager->isScanning); });
    manager->discoverDevices(false);
    tasks.runAll();
    queue.drain();
    EXPECT_EQ(seen, (QList<bool>{false, true}));
}

TEST_F(SonosManagerTest, ADenialIsFlaggedAndToldOnceAndClearedByALaterSuccess) {
    network.addInterface(QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), QString());
    network.scripts[QStringLiteral("10.0.0.2")].sendErrno = {{QStringLiteral("239.255.255.250"), EPERM}};
    start(false);
    for (int run = 0; run < 2; ++run) {
        manager->discoverDevices(false);
        tasks.runAll();
        queue.drain();
    }
    EXPECT_TRUE(manager->localNetworkDenied);
    EXPECT_EQ(updates, QList<QList<SonosRoom>>{{}}) << "with the current rooms, once";

    network.scripts[QStringLiteral("10.0.0.2")].sendErrno.clear();
    manager->discoverDevices(false);
    tasks.runAll();
    queue.drain();
    EXPECT_TRUE(manager->localNetworkDenied) << "a run that finds nothing leaves it";

    updates.clear();
    network.scripts[QStringLiteral("10.0.0.2")].datagrams = {
        test::ssdpAnswer(test::descriptionUrl(1).toString())};
    house.players = {{1, {QStringLiteral("A"), kitchen}}};
    manager->discoverDevices(false);
    tasks.runAll();
    queue.drain();
    EXPECT_FALSE(manager->localNetworkDenied);
    ASSERT_EQ(updates.size(), 2);
    EXPECT_TRUE(updates[0].isEmpty()) << "first the cleared denial, with the rooms as they were";
    EXPECT_EQ(updates[1].size(), 1);
}

TEST_F(SonosManagerTest, HandlersMayBeMissing) {
    network.addInterface(QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), QString());
    network.scripts[QStringLiteral("10.0.0.2")].datagrams = {
        test::ssdpAnswer(test::descriptionUrl(1).toString())};
    house.players = {{1, {QStringLiteral("A"), kitchen}}};
    start(false);
    manager->onRoomsUpdated = nullptr;
    manager->onPlaybackStateChanged = nullptr;
    manager->discoverDevices(false);
    tasks.runAll();
    queue.drain();
    manager->selectTarget(AudioOutputTarget::sonos(QStringLiteral("A")));
    manager->selectTarget(AudioOutputTarget::localMac());
    queue.drain();
    EXPECT_EQ(manager->rooms.get().size(), 1);
}

TEST_F(SonosManagerTest, FindsARoomByItsId) {
    startWithRooms({roomOf(otherPlayer(QStringLiteral("A"), kitchen)),
                    roomOf(otherPlayer(QStringLiteral("B"), kitchen))});
    EXPECT_EQ(manager->room(QStringLiteral("B"))->coordinator.id, QStringLiteral("B"));
    EXPECT_FALSE(manager->room(QStringLiteral("b")));
    EXPECT_FALSE(manager->room(QString()));
}

TEST_F(SonosManagerTest, TheEmptyStateSaysWhy) {
    start(false);
    const QList<QPair<AppLanguage, QStringList>> rows{
        {AppLanguage::en,
         {QStringLiteral("No Sonos or Zofra devices found"), QStringLiteral("Scanning…"),
          QStringLiteral("No access to local network")}},
        {AppLanguage::nl,
         {QStringLiteral("Geen Sonos- of Zofra-apparaten gevonden"), QStringLiteral("Bezig met zoeken…"),
          QStringLiteral("Geen toegang tot lokaal netwerk")}},
        {AppLanguage::fr,
         {QStringLiteral("Aucun appareil Sonos ou Zofra trouvé"), QStringLiteral("Recherche en cours…"),
          QStringLiteral("Pas d'accès au réseau local")}},
        {AppLanguage::de,
         {QStringLiteral("Keine Sonos- oder Zofra-Geräte gefunden"), QStringLiteral("Suche läuft …"),
          QStringLiteral("Kein Zugriff aufs lokale Netzwerk")}}};
    for (const auto& [language, texts] : rows) {
        setLanguage(language);
        manager->isScanning = false;
        manager->localNetworkDenied = false;
        EXPECT_EQ(manager->emptyStateMessage(), texts[0]);
        manager->isScanning = true;
        EXPECT_EQ(manager->emptyStateMessage(), texts[1]);
        manager->localNetworkDenied = true;
        EXPECT_EQ(manager->emptyStateMessage(), texts[2]) << "denial wins over scanning";
        manager->isScanning = false;
        EXPECT_EQ(manager->emptyStateMessage(), texts[2]);
    }
}

TEST_F(SonosManagerTest, TheTitleOfHereAndEverywhereFollowsTheLanguage) {
    start(false);
    const QList<std::tuple<AppLanguage, QString, QString>> rows{
        {AppLanguage::en, QStringLiteral("This Mac"), QStringLiteral("Everywhere (All Rooms)")},
        {AppLanguage::nl, QStringLiteral("Deze Mac"), QStringLiteral("Overal (Alle kamers)")},
        {AppLanguage::fr, QStringLiteral("Ce Mac"), QStringLiteral("Partout (Toutes les pièces)")},
        {AppLanguage::de, QStringLiteral("Dieser Mac"), QStringLiteral("Überall (Alle Räume)")}};
    for (const auto& [language, here, everywhere] : rows) {
        setLanguage(language);
        manager->activeTarget = AudioOutputTarget::localMac();
        EXPECT_EQ(manager->activeTargetTitle(), here);
        manager->activeTarget = AudioOutputTarget::sonosEverywhere();
        EXPECT_EQ(manager->activeTargetTitle(), everywhere);
    }
}

TEST_F(SonosManagerTest, ARoomIsTitledByItsName) {
    startWithRooms({roomOf(otherPlayer(QStringLiteral("A"), kitchen)),
                    roomOf(otherPlayer(QStringLiteral("B"), QStringLiteral("kitchen")))});
    EXPECT_EQ(titles(), (QStringList{kitchen, QStringLiteral("kitchen")})) << "case makes another name";
    manager->activeTarget = AudioOutputTarget::sonos(QStringLiteral("B"));
    EXPECT_EQ(manager->activeTargetTitle(), QStringLiteral("kitchen"));
}

TEST_F(SonosManagerTest, NamesakesOfTwoBrandsAreToldApartByBrand) {
    startWithRooms(
        {roomOf(otherPlayer(QStringLiteral("A"), kitchen)), roomOf(ownPlayer(QStringLiteral("B"), kitchen))});
    EXPECT_EQ(titles(), (QStringList{QStringLiteral("Kitchen (Sonos)"), QStringLiteral("Kitchen (Zofra)")}));
    manager->activeTarget = AudioOutputTarget::sonos(QStringLiteral("B"));
    EXPECT_EQ(manager->activeTargetTitle(), QStringLiteral("Kitchen (Zofra)"));
}

TEST_F(SonosManagerTest, TheBrandIsReadFromManufacturerOrModelNameInAnyCase) {
    auto byMaker = otherPlayer(QStringLiteral("A"), kitchen, 1);
    byMaker.manufacturer = QStringLiteral("zofra pi player");
    auto byModel = otherPlayer(QStringLiteral("B"), kitchen, 2);
    byModel.modelName = QStringLiteral("ZOFRA ZOFRA");
    auto byModelText = otherPlayer(QStringLiteral("C"), kitchen, 3);
    byModelText.model = QStringLiteral("Zofra Pi Player");
    startWithRooms({roomOf(byMaker), roomOf(byModel), roomOf(byModelText)});
    EXPECT_EQ(titles(), (QStringList{QStringLiteral("Kitchen (Zofra) – 10.0.0.1"),
                                     QStringLiteral("Kitchen (Zofra) – 10.0.0.2"),
                                     QStringLiteral("Kitchen (Zofra) – 10.0.0.3")}));
}

TEST_F(SonosManagerTest, NamesakesOfOneBrandAreToldApartByMore) {
    startWithRooms({roomOf(otherPlayer(QStringLiteral("A"), kitchen, 1)),
                    roomOf(otherPlayer(QStringLiteral("B"), kitchen, 2)),
                    roomOf(ownPlayer(QStringLiteral("C"), kitchen, 3))});
    EXPECT_EQ(titles(),
              (QStringList{QStringLiteral("Kitchen (Sonos) – 10.0.0.1"),
                           QStringLiteral("Kitchen (Sonos) – 10.0.0.2"), QStringLiteral("Kitchen (Zofra)")}));
}

TEST_F(SonosManagerTest, NamesakesAtOneAddressAreToldApartById) {
    startWithRooms({roomOf(otherPlayer(QStringLiteral("A"), kitchen, 1)),
                    roomOf(otherPlayer(QStringLiteral("B"), kitchen, 1))});
    EXPECT_EQ(titles(),
              (QStringList{QStringLiteral("Kitchen (Sonos) – A"), QStringLiteral("Kitchen (Sonos) – B")}));
}

TEST_F(SonosManagerTest, ARoomThatIsGoneKeepsTheTitleItHadLast) {
    network.addInterface(QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), QString());
    auto& datagrams = network.scripts[QStringLiteral("10.0.0.2")].datagrams;
    datagrams = {test::ssdpAnswer(test::descriptionUrl(9).toString())};
    house.players = {{9, {QStringLiteral("C"), QStringLiteral("Hall")}}};
    startWithRooms(
        {roomOf(otherPlayer(QStringLiteral("A"), kitchen)), roomOf(ownPlayer(QStringLiteral("B"), kitchen))});
    manager->activeTarget = AudioOutputTarget::sonos(QStringLiteral("B"));
    tasks.runAll();
    queue.drain();
    ASSERT_EQ(titles(), QStringList{QStringLiteral("Hall")});
    EXPECT_EQ(manager->activeTargetTitle(), QStringLiteral("Kitchen (Zofra)"));
    queue.advance(60s);
    tasks.runAll();
    queue.drain();
    EXPECT_EQ(manager->activeTargetTitle(), QStringLiteral("Kitchen (Zofra)")) << "also after further runs";
    manager->activeTarget = AudioOutputTarget::sonos(QStringLiteral("unknown"));
    EXPECT_EQ(manager->activeTargetTitle(), QStringLiteral("unknown")) << "never shown: its id";
}

} // namespace
} // namespace zofra
