// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SonosManager.h"

#include "speakers/RoomCache.h"
#include "speakers/SpeakerDiscovery.h"
#include "stations/texts/InterfaceTexts.h"

#include <algorithm>
#include <chrono>

namespace zofra {

namespace {

constexpr std::chrono::seconds scanInterval{60};
constexpr std::chrono::seconds everywherePatience{30};

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
          environment,
          SpeakerBackground::Reports{[this](bool denied) { setLocalNetworkDenied(denied); },
                                     [this](const QList<SonosRoom>& newRooms) { roomsFound(newRooms); },
                                     [this] { runEnded(); }}))
    , m_playback(m_background) {
    if (!automaticallyDiscover)
        return;
    if (const auto cached = environment.defaults.data(cacheKey))
        rooms = decodeRooms(*cached).value_or(QList<SonosRoom>());
    discoverDevices(true);
    m_scanTimer = environment.mainQueue.startTimer(scanInterval, MainQueue::Repeat::forever,
                                                   [this] { discoverDevices(false); });
}

void SonosManager::discoverDevices(bool forceSubnetScan) {
    if (isScanning)
        return;
    isScanning = true;
    m_environment.tasks.async([background = m_background, forceSubnetScan] {
        runDiscovery(background, forceSubnetScan);
        background->noteRunEnded();
    });
}

void SonosManager::runEnded() {
    isScanning = false;
    if (m_everywhereLater && activeTarget == AudioOutputTarget::sonosEverywhere())
        playEverywhere();
}

void SonosManager::roomsFound(const QList<SonosRoom>& newRooms) {
    rememberTitles();
    rooms = newRooms;
    followTarget();
    if (m_automaticallyDiscover)
        m_environment.defaults.setData(cacheKey, encodeRooms(rooms));
    if (onRoomsUpdated)
        onRoomsUpdated(rooms);
}

void SonosManager::rememberTitles() {
    QHash<QString, QString> titles;
    const auto active = activeTarget.get().roomId();
    if (m_formerTitles.contains(active))
        titles.insert(active, m_formerTitles.value(active));
    for (const auto& former : rooms.get())
        titles.insert(former.id(), displayTitle(former));
    m_formerTitles = titles;
}

void SonosManager::followTarget() {
    const auto former = activeTarget.get().roomId();
    if (former.isEmpty() || room(former))
        return;
    const auto& all = rooms.get();
    const auto found = std::ranges::find_if(all, [&former](const SonosRoom& room) {
        return std::ranges::find(room.speakers, former, &SonosSpeaker::id) != room.speakers.end();
    });
    if (found == all.end())
        return;
    if (m_playedRoom == former)
        m_playedRoom = found->id();
    activeTarget = AudioOutputTarget::sonos(found->id());
}

void SonosManager::setLocalNetworkDenied(bool denied) {
    if (localNetworkDenied == denied)
        return;
    localNetworkDenied = denied;
    if (onRoomsUpdated)
        onRoomsUpdated(rooms);
}

void SonosManager::selectTarget(const AudioOutputTarget& target) {
    activeTarget = target;
    switch (target.kind()) {
    case AudioOutputTarget::Kind::localMac:
        stopAllSonos();
        setSonosPlaying(false);
        break;
    case AudioOutputTarget::Kind::sonos:
        m_environment.localPlayer.stop();
        playZofra(target.roomId());
        break;
    case AudioOutputTarget::Kind::sonosEverywhere:
        m_environment.localPlayer.stop();
        playEverywhere();
        break;
    }
}

void SonosManager::setStation(RadioStation station) {
    if (station == currentStation)
        return;
    currentStation = station;
    if (isSonosPlaying || m_playback.isStarting())
        playTarget();
}

void SonosManager::playTarget() {
    const auto target = activeTarget.get();
    if (target.kind() == AudioOutputTarget::Kind::sonos)
        playZofra(target.roomId());
    else if (target.kind() == AudioOutputTarget::Kind::sonosEverywhere)
        playEverywhere();
}

void SonosManager::togglePlayPause() {
    const auto target = activeTarget.get();
    if (target.kind() == AudioOutputTarget::Kind::localMac) {
        if (m_environment.localPlayer.isPlaying)
            m_environment.localPlayer.stop();
        else
            m_environment.localPlayer.play();
    } else if (!isSonosPlaying) {
        playTarget();
    } else if (target.kind() == AudioOutputTarget::Kind::sonos) {
        pauseTarget(target.roomId());
    } else {
        stopAllSonos();
        setSonosPlaying(false);
    }
}

void SonosManager::playZofra(const QString& roomId) {
    if (const auto found = room(roomId))
        play(NetworkPlayerProtocol::playbackGroups(found->speakers), currentStation, roomId);
}

void SonosManager::playEverywhere() {
    const auto speakers = controllableSpeakers();
    play(NetworkPlayerProtocol::playbackGroups(speakers), currentStation, std::nullopt);
    if (!speakers.isEmpty() || !isScanning)
        return;
    m_everywhereLater =
        m_environment.mainQueue.startTimer(everywherePatience, MainQueue::Repeat::once, [this] {
            m_everywhereLater.reset();
            m_background->log(u"Wiedergabe überall nicht gestartet: Suche dauert zu lange."_qs);
        });
}

void SonosManager::play(const QList<PlayerPlaybackGroup>& groups, RadioStation station,
                        const std::optional<QString>& roomId) {
    m_everywhereLater.reset();
    m_playedRoom = roomId;
    m_playback.play(
        groups, station.networkPlayerStreamURI(m_environment.hosts),
        [this, count = groups.size()](qsizetype started) {
            setSonosPlaying(started >= 1);
            if (started != count)
                m_background->log(
                    u"Wiedergabe nur auf %1 von %2 Ausgabegruppen gestartet."_qs.arg(started).arg(count));
        });
}

void SonosManager::setSonosPlaying(bool playing) {
    isSonosPlaying = playing;
    if (onPlaybackStateChanged)
        onPlaybackStateChanged(playing);
}

void SonosManager::pause(const SonosRoom& room) {
    QList<SonosSpeaker> players{room.coordinator};
    // Playing may have given the room another leader than the one it had when it was found.
    if (m_playedRoom == room.id()) {
        for (const auto& leader : m_playback.leaders()) {
            if (leader.id != room.coordinator.id)
                players.append(asLastFound(leader));
        }
    }
    pausePlayers(players);
}

void SonosManager::pauseTarget(const QString& roomId) {
    if (const auto found = room(roomId)) {
        pause(*found);
    } else if (m_playedRoom == roomId) {
        // The room has disappeared, but what was started there may still be heard.
        pausePlayers(m_playback.leaders());
    }
}

void SonosManager::pausePlayers(const QList<SonosSpeaker>& players) {
    m_everywhereLater.reset();
    // A start that is given up plays nothing, even when the players do not hear of the pause.
    const bool wasStarting = m_playback.isStarting();
    m_playback.pause(players,
                     [this, wasStarting](bool succeeded) { setSonosPlaying(!succeeded && !wasStarting); });
}

void SonosManager::stopAllSonos() {
    m_everywhereLater.reset();
    m_playback.stop(controllableSpeakers());
    isSonosPlaying = false;
}

QList<SonosSpeaker> SonosManager::controllableSpeakers() const {
    QList<SonosSpeaker> speakers = m_background->allSpeakers.value();
    speakers.removeIf([](const SonosSpeaker& speaker) { return !speaker.isVisible || speaker.isSub; });
    return speakers;
}

SonosSpeaker SonosManager::asLastFound(const SonosSpeaker& speaker) const {
    const auto speakers = m_background->allSpeakers.value();
    const auto found = std::ranges::find(speakers, speaker.id, &SonosSpeaker::id);
    return found == speakers.end() ? speaker : *found;
}

std::optional<SonosRoom> SonosManager::room(const QString& id) const {
    const auto& all = rooms.get();
    const auto found = std::ranges::find(all, id, &SonosRoom::id);
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
    if (target.kind() == AudioOutputTarget::Kind::sonosEverywhere)
        return texts::everywhere.in(language);
    if (target.kind() == AudioOutputTarget::Kind::localMac)
        return texts::thisMac.in(language);
    const auto found = room(target.roomId());
    return found ? displayTitle(*found) : m_formerTitles.value(target.roomId(), target.roomId());
}

} // namespace zofra
