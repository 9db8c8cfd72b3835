// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RadioControls.h"

#include "app/Settings.h"
#include "app/VolumePercent.h"
#include "metadata/RadioViewModel.h"
#include "playback/RadioPlayer.h"
#include "speakers/SonosManager.h"
#include "stations/LanguageManager.h"

#include <QUrl>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace zofra {

RadioControls::RadioControls(const RadioObjects& objects, Shell shell)
    : m_objects(objects)
    , m_shell(std::move(shell)) {}

bool RadioControls::isPlaying() const {
    const bool isHere = m_objects.sonos.activeTarget.get() == AudioOutputTarget::localMac();
    return isHere ? m_objects.player.isPlaying : m_objects.sonos.isSonosPlaying;
}

void RadioControls::toggle() {
    m_objects.sonos.togglePlayPause();
    m_shell.refresh();
}

void RadioControls::stopIn(std::chrono::seconds time) {
    m_sleepTimer.reset();
    m_stopsAt.reset();
    if (time > std::chrono::seconds(0)) {
        m_stopsAt = m_shell.clock() + time;
        m_sleepTimer = m_shell.mainQueue.startTimer(time, MainQueue::Repeat::once, [this] {
            m_stopsAt.reset();
            stop();
            m_shell.refresh();
        });
    }
    m_shell.refresh();
}

void RadioControls::chooseStation(RadioStation station) {
    m_objects.player.setStation(station);
    m_objects.sonos.setStation(station);
    m_objects.viewModel.setStation(station);
    m_shell.refresh();
}

void RadioControls::chooseStationToHear(RadioStation station) {
    RadioPlayer& player = m_objects.player;
    if (player.player && !player.isPlaying)
        player.drop();
    chooseStation(station);
}

void RadioControls::chooseNeighbour(int distance) {
    const auto& all = RadioStation::allCases;
    const auto count = std::ssize(all);
    const auto place = std::ranges::find(all, m_objects.player.currentStation.get()) - all.begin();
    chooseStation(*(all.begin() + (place + distance + count) % count));
}

void RadioControls::chooseThisComputer() {
    SonosManager& sonos = m_objects.sonos;
    sonos.activeTarget = AudioOutputTarget::localMac();
    sonos.stopAllSonos();
    sonos.isSonosPlaying = false;
    if (const auto tell = sonos.onPlaybackStateChanged)
        tell(false);
    m_shell.refresh();
}

void RadioControls::chooseRoom(const QString& roomId) {
    // The text may be one of the manager's own, which playing can replace.
    const auto target = AudioOutputTarget::sonos(roomId);
    m_objects.sonos.activeTarget = target;
    m_objects.player.stop();
    m_objects.sonos.playZofra(target.roomId());
    m_shell.refresh();
}

void RadioControls::chooseEverywhere() {
    m_objects.sonos.selectTarget(AudioOutputTarget::sonosEverywhere());
    m_shell.refresh();
}

void RadioControls::setVolume(float volume) {
    m_objects.player.applyVolume(volume);
    const auto percent = volumePercent(volume);
    if (!percent)
        return;
    SonosManager& sonos = m_objects.sonos;
    const AudioOutputTarget target = sonos.activeTarget;
    if (target == AudioOutputTarget::sonosEverywhere())
        sonos.setVolumeEverywhere(*percent);
    else if (const auto room = sonos.room(target.roomId()); room && target != AudioOutputTarget::localMac())
        sonos.setVolume(*percent, *room);
}

void RadioControls::requestVolume(double volume) {
    if (!std::isnan(volume))
        setVolume(static_cast<float>(std::clamp(volume, 0.0, 1.0)));
}

int RadioControls::changeVolume(int percent) {
    const int change = std::clamp(percent, -100, 100);
    const int result = std::clamp(shownVolumePercent(m_objects.player.volume) + change, 0, 100);
    setVolume(volumeOfPercent(result));
    return result;
}

void RadioControls::search() {
    m_objects.sonos.discoverDevices(true);
}

void RadioControls::chooseLanguage(AppLanguage language) {
    m_objects.languages.setCurrentLanguage(language);
}

void RadioControls::announceSongs(bool isOn) {
    m_shell.defaults.setString(announceSongsKey, isOn ? u"true"_qs : u"false"_qs);
}

void RadioControls::openLocalNetworkSettings() {
    const QUrl url(u"x-apple.systempreferences:com.apple.preference.security?Privacy_LocalNetwork"_qs);
    if (url.isValid())
        m_shell.workspace.open(url);
}

void RadioControls::quit() {
    m_objects.player.drop();
    m_objects.sonos.stopAllSonos();
    m_shell.terminate();
}

} // namespace zofra
