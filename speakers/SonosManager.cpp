// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SonosManager.h"

#include "platform/SharedInstance.h"
#include "speakers/OutputTitles.h"
#include "speakers/RoomCache.h"
#include "speakers/SpeakerDiscovery.h"
#include "stations/texts/InterfaceTexts.h"

#include <algorithm>
#include <chrono>

namespace zofra {

namespace {

constexpr std::chrono::seconds scanInterval{60};

} // namespace

SonosManager::SonosManager(bool automaticallyDiscover, const Environment& environment)
    : rooms(*this, {})
    , activeTarget(*this, AudioOutputTarget::localMac())
    , isSonosPlaying(*this, false)
    , isScanning(*this, false)
    , localNetworkDenied(*this, false)
    , currentStation(*this, RadioStation::savedStation(environment.defaults))
    , m_environment(environment)
    , m_automaticallyDiscover(automaticallyDiscover)
    , m_background(std::make_shared<SpeakerBackground>(
          SpeakerBackground::Outside{environment.session, environment.mainQueue, environment.tasks,
                                     environment.network, environment.systemLog},
          SpeakerBackground::Reports{[this](bool denied) { setLocalNetworkDenied(denied); },
                                     [this](const QList<SonosRoom>& newRooms) { roomsFound(newRooms); },
                                     [this] { isScanning = false; }})) {
    if (!automaticallyDiscover)
        return;
    loadCachedRooms();
    discoverDevices(true);
    m_scanTimer = environment.mainQueue.startTimer(scanInterval, MainQueue::Repeat::forever,
                                                   [this] { discoverDevices(false); });
}

SonosManager& SonosManager::shared() {
    return SharedInstance<SonosManager>::get();
}

SonosManager::~SonosManager() {
    m_scanTimer.reset();
    m_background->end();
}

void SonosManager::loadCachedRooms() {
    const auto json = m_environment.defaults.data(cacheKey);
    const auto cached = json ? decodeRooms(*json) : std::nullopt;
    if (cached)
        rooms = *cached;
}

void SonosManager::saveCachedRooms() {
    if (m_automaticallyDiscover)
        m_environment.defaults.setData(cacheKey, encodeRooms(rooms));
}

void SonosManager::discoverDevices(bool forceSubnetScan) {
    if (isScanning)
        return;
    isScanning = true;
    m_environment.tasks.async([weak = std::weak_ptr(m_background), forceSubnetScan] {
        const auto background = weak.lock();
        if (!background || background->ended())
            return;
        std::make_shared<SpeakerDiscovery>(background)->runDiscovery(forceSubnetScan);
        background->noteRunEnded();
    });
}

void SonosManager::roomsFound(const QList<SonosRoom>& newRooms) {
    replaceRooms(newRooms);
    saveCachedRooms();
    if (onRoomsUpdated)
        onRoomsUpdated(rooms);
}

void SonosManager::replaceRooms(const QList<SonosRoom>& newRooms) {
    QHash<QString, QString> titles;
    const auto active = activeTarget.get().roomId();
    if (m_formerTitles.contains(active))
        titles.insert(active, m_formerTitles.value(active));
    for (const auto& former : rooms.get())
        titles.insert(former.id(), displayTitle(former));
    m_formerTitles = titles;
    rooms = newRooms;
}

void SonosManager::setLocalNetworkDenied(bool denied) {
    if (localNetworkDenied == denied)
        return;
    localNetworkDenied = denied;
    if (onRoomsUpdated)
        onRoomsUpdated(rooms);
}

QList<SonosSpeaker> SonosManager::controllableSpeakers() const {
    QList<SonosSpeaker> speakers = m_background->allSpeakers.value();
    speakers.removeIf([](const SonosSpeaker& speaker) { return !speaker.isVisible || speaker.isSub; });
    return speakers;
}

SonosSpeaker SonosManager::asLastFound(const SonosSpeaker& speaker) const {
    const auto speakers = m_background->allSpeakers.value();
    const auto found = std::find_if(speakers.begin(), speakers.end(),
                                    [&speaker](const SonosSpeaker& other) { return other.id == speaker.id; });
    return found == speakers.end() ? speaker : *found;
}

std::optional<SonosRoom> SonosManager::room(const QString& id) const {
    const auto& all = rooms.get();
    const auto found =
        std::find_if(all.begin(), all.end(), [&id](const SonosRoom& room) { return room.id() == id; });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

QString SonosManager::emptyStateMessage() const {
    const auto language = m_environment.languages.currentLanguage();
    if (localNetworkDenied)
        return texts::accessDenied.in(language);
    return isScanning ? texts::scanning.in(language) : texts::nothingFound.in(language);
}

QString SonosManager::activeTargetTitle() const {
    const auto language = m_environment.languages.currentLanguage();
    const auto& target = activeTarget.get();
    switch (target.kind()) {
    case AudioOutputTarget::Kind::sonosEverywhere:
        return texts::everywhere.in(language);
    case AudioOutputTarget::Kind::sonos:
        if (const auto found = room(target.roomId()))
            return displayTitle(*found);
        return m_formerTitles.value(target.roomId(), target.roomId());
    case AudioOutputTarget::Kind::localMac:
        break;
    }
    return texts::thisMac.in(language);
}

QString SonosManager::displayTitle(const SonosRoom& room) const {
    return roomTitle(room, rooms);
}

} // namespace zofra
