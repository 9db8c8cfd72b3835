// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlaybackStart.h"
#include "speakers/SonosManager.h"
#include "speakers/SpeakerControl.h"

#include <algorithm>

namespace zofra {

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
    if (!isSonosPlaying)
        return;
    const auto target = activeTarget.get();
    if (target.kind() == AudioOutputTarget::Kind::sonos)
        playZofra(target.roomId());
    else if (target.kind() == AudioOutputTarget::Kind::sonosEverywhere)
        playEverywhere();
}

void SonosManager::togglePlayPause() {
    const auto target = activeTarget.get();
    switch (target.kind()) {
    case AudioOutputTarget::Kind::sonos:
        if (!isSonosPlaying)
            playZofra(target.roomId());
        else if (const auto found = room(target.roomId()))
            pause(*found);
        break;
    case AudioOutputTarget::Kind::sonosEverywhere:
        if (!isSonosPlaying) {
            playEverywhere();
        } else {
            stopAllSonos();
            setSonosPlaying(false);
        }
        break;
    case AudioOutputTarget::Kind::localMac:
        if (m_environment.localPlayer.isPlaying)
            m_environment.localPlayer.stop();
        else
            m_environment.localPlayer.play();
        break;
    }
}

void SonosManager::playZofra(const QString& roomId) {
    if (const auto found = room(roomId))
        play(NetworkPlayerProtocol::playbackGroups(found->speakers), currentStation, roomId);
}

void SonosManager::playEverywhere() {
    play(NetworkPlayerProtocol::playbackGroups(controllableSpeakers()), currentStation, std::nullopt);
}

void SonosManager::play(const Groups& groups, RadioStation station, const std::optional<QString>& roomId) {
    m_lastPlay = {roomId, {}};
    for (const auto& group : groups)
        m_lastPlay.leaders.append(group.leader);
    startPlayback(m_background, groups, station.networkPlayerStreamURI(m_environment.hosts),
                  [this, weak = std::weak_ptr(m_background), count = groups.size()](qsizetype started) {
                      if (const auto background = weak.lock())
                          background->post([this, started, count] { playFinished(started, count); });
                  });
}

void SonosManager::playFinished(qsizetype started, qsizetype groups) {
    setSonosPlaying(started >= 1);
    if (started != groups)
        m_background->log(QStringLiteral("Wiedergabe nur auf ") + QString::number(started) +
                          QStringLiteral(" von ") + QString::number(groups) +
                          QStringLiteral(" Ausgabegruppen gestartet."));
}

void SonosManager::setSonosPlaying(bool playing) {
    isSonosPlaying = playing;
    if (onPlaybackStateChanged)
        onPlaybackStateChanged(playing);
}

void SonosManager::pause(const SonosRoom& room) {
    // Playing may have given the room another leader than the one it had when it was found.
    QList<SonosSpeaker> speakers{room.coordinator};
    if (m_lastPlay.roomId == room.id()) {
        for (const auto& leader : std::as_const(m_lastPlay.leaders)) {
            if (leader.id != room.coordinator.id)
                speakers.append(asLastFound(leader));
        }
    }
    pausePlayers(m_background, speakers, [this, weak = std::weak_ptr(m_background)](bool succeeded) {
        if (const auto background = weak.lock())
            background->post([this, succeeded] { setSonosPlaying(!succeeded); });
    });
}

void SonosManager::stopAllSonos() {
    const SpeakerControl control(m_background);
    const auto speakers = controllableSpeakers();
    for (const auto& speaker : speakers)
        control.stop(speaker);
    isSonosPlaying = false;
}

void SonosManager::setVolume(int percent, const SonosRoom& room) {
    const SpeakerControl control(m_background);
    for (const auto& speaker : room.speakers)
        control.setVolume(speaker, percent);
}

void SonosManager::setVolumeEverywhere(int percent) {
    const SpeakerControl control(m_background);
    const auto speakers = controllableSpeakers();
    for (const auto& speaker : speakers)
        control.setVolume(speaker, percent);
}

} // namespace zofra
