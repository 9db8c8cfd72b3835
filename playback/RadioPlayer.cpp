// SPDX-License-Identifier: GPL-3.0-or-later
#include "playback/RadioPlayer.h"

#include <chrono>
#include <utility>

namespace zofra {

namespace {

constexpr float defaultVolume = 0.8F;
/// Networks need a moment after the computer has woken.
constexpr std::chrono::milliseconds restartAfterWake{2000};

} // namespace

RadioPlayer::RadioPlayer(const Environment& environment)
    : isPlaying(*this, false)
    , isBuffering(*this, false)
    , volume(*this, defaultVolume)
    , currentStation(*this, RadioStation::savedStation(environment.defaults))
    , m_environment(environment) {
    // A stored 0 is not taken over: a player that starts silent looks broken.
    const auto stored = m_environment.defaults.floatValue(volumeDefaultsKey).value_or(0.0F);
    if (stored > 0.0F)
        volume = stored;
    currentStation = RadioStation::savedStation(m_environment.defaults);
    setupRemoteCommands();
    m_wakeObserver = m_environment.wake.observeDidWake(m_lifetime.guard([this] { handleWakeFromSleep(); }));
}

void RadioPlayer::play() {
    if (!player)
        setupPlayer(currentStation.get().streamAAC(m_environment.hosts));
    player->setVolume(volume);
    player->play();
    isPlaying = true;
    if (onPlaybackStateChanged)
        onPlaybackStateChanged(true);
}

void RadioPlayer::stop() {
    if (player)
        player->pause();
    isPlaying = false;
    isBuffering = false;
    if (onPlaybackStateChanged)
        onPlaybackStateChanged(false);
}

void RadioPlayer::drop() {
    stop();
    if (player)
        player->replaceCurrentItem(nullptr);
    m_timeControlObserver.reset();
    m_stallObserver.reset();
    m_failureObserver.reset();
    player.reset();
    playerItem.reset();
}

void RadioPlayer::setStation(RadioStation station) {
    if (station == currentStation.get())
        return;
    currentStation = station;
    RadioStation::setSavedStation(m_environment.defaults, station);
    if (onStationChanged)
        onStationChanged(station);
    if (!isPlaying)
        return;
    setupPlayer(currentStation.get().streamAAC(m_environment.hosts));
    player->setVolume(volume);
    player->play();
}

void RadioPlayer::applyVolume(float value) {
    // Written so that a NaN, which compares with nothing, becomes the upper bound.
    const float notAboveOne = value < 1.0F ? value : 1.0F;
    const float clamped = notAboveOne > 0.0F ? notAboveOne : 0.0F;
    volume = clamped;
    if (player)
        player->setVolume(clamped);
    m_environment.defaults.setFloat(volumeDefaultsKey, clamped);
}

void RadioPlayer::updateNowPlayingInfo(const QString& title, const std::optional<QString>& artist) {
    m_environment.nowPlaying.setNowPlayingInfo(
        {.title = title,
         .artist = artist && !artist->isEmpty() ? artist : std::nullopt,
         .isLiveStream = true});
}

void RadioPlayer::setupPlayer(const QUrl& url) {
    playerItem = std::make_shared<StreamItem>(url, currentStation.get().displayName());
    // The previous player falls silent here, before the new one opens anything.
    player = m_environment.streamPlayers.makePlayer(playerItem);
    player->setVolume(volume);

    // Carried to the main queue, where what was posted for an earlier item must not touch this one.
    const auto onMainQueue = [this](void (RadioPlayer::*handler)()) {
        auto forThisItem = m_lifetime.guard([this, handler, item = std::weak_ptr(playerItem)] {
            const auto sender = item.lock();
            if (sender && sender == playerItem && player)
                (this->*handler)();
        });
        return [&queue = m_environment.mainQueue, forThisItem] { queue.async(forThisItem); };
    };
    m_timeControlObserver = player->observeTimeControlStatus(
        [announce = onMainQueue(&RadioPlayer::timeControlStatusChanged)](TimeControlStatus) { announce(); });
    m_stallObserver = playerItem->playbackStalled.add(onMainQueue(&RadioPlayer::handlePlaybackStall));
    m_failureObserver =
        playerItem->failedToPlayToEndTime.add(onMainQueue(&RadioPlayer::handlePlaybackFailed));
}

void RadioPlayer::timeControlStatusChanged() {
    // The status of this moment, not the one that was announced: what is over is not acted on.
    switch (player->timeControlStatus()) {
    case TimeControlStatus::paused:
        if (isPlaying)
            isBuffering = true;
        break;
    case TimeControlStatus::waitingToPlayAtSpecifiedRate:
        isBuffering = true;
        break;
    case TimeControlStatus::playing:
        isPlaying = true;
        isBuffering = false;
        if (onPlaybackStateChanged)
            onPlaybackStateChanged(true);
        break;
    }
}

void RadioPlayer::handlePlaybackStall() {
    if (!isPlaying)
        return;
    isBuffering = true;
    player->play();
}

void RadioPlayer::handlePlaybackFailed() {
    if (!isPlaying)
        return;
    m_environment.output.writeLine(u"AAC Stream fehlgeschlagen – wechsle zu MP3 Fallback (%1)"_qs.arg(
        currentStation.get().displayName()));
    setupPlayer(currentStation.get().streamMP3(m_environment.hosts));
    player->play();
}

void RadioPlayer::handleWakeFromSleep() {
    if (!isPlaying)
        return;
    m_environment.mainQueue.asyncAfter(restartAfterWake, m_lifetime.guard([this] {
        if (!isPlaying)
            return;
        setupPlayer(currentStation.get().streamAAC(m_environment.hosts));
        player->play();
    }));
}

void RadioPlayer::setupRemoteCommands() {
    const auto command = [this](auto act) {
        // Success also when the player is gone: there is nothing left that could fail.
        return [run = m_lifetime.guard(act)]() mutable {
            run();
            return RemoteCommandStatus::success;
        };
    };
    m_environment.remoteCommands.setTogglePlayPauseHandler(command([this] { isPlaying ? stop() : play(); }));
    m_environment.remoteCommands.setPlayHandler(command([this] { play(); }));
    m_environment.remoteCommands.setPauseHandler(command([this] { stop(); }));
}

} // namespace zofra
