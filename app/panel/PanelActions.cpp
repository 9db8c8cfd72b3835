// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelActions.h"

#include "metadata/RadioViewModel.h"
#include "platform/StreamPlayer.h"
#include "playback/RadioPlayer.h"
#include "speakers/SonosManager.h"

#include <QUrl>

namespace zofra {

std::optional<int> shownPercent(float volume) {
    // A float holds 2^31 exactly, so the comparison is exact; a NaN fails it too.
    const float percent = volume * 100.0F;
    if (!(percent > -2147483648.0F && percent < 2147483648.0F))
        return std::nullopt;
    return static_cast<int>(percent);
}

PanelActions::PanelActions(const PopupPanelContent& content, LoginItem& loginItem, StandardOutput& output,
                           Workspace& workspace)
    : m_content(content)
    , m_loginItem(loginItem)
    , m_output(output)
    , m_workspace(workspace) {}

bool PanelActions::isPlaying() const {
    const bool isLocal = m_content.sonos.activeTarget.get() == AudioOutputTarget::localMac();
    return isLocal ? m_content.player.isPlaying.get() : m_content.sonos.isSonosPlaying.get();
}

void PanelActions::chooseLanguage(AppLanguage language) {
    m_content.languages.setCurrentLanguage(language);
}

void PanelActions::chooseStation(RadioStation station) {
    m_content.player.setStation(station);
    m_content.sonos.setStation(station);
    m_content.viewModel.setStation(station);
    if (m_content.updateStatusBarButton)
        m_content.updateStatusBarButton();
}

void PanelActions::chooseThisMac() {
    SonosManager& sonos = m_content.sonos;
    sonos.activeTarget = AudioOutputTarget::localMac();
    sonos.stopAllSonos();
    sonos.isSonosPlaying = false;
    if (sonos.onPlaybackStateChanged)
        sonos.onPlaybackStateChanged(false);
}

void PanelActions::chooseRoom(const QString& roomId) {
    // The panel hands the sound to a room for now: the target, and what the local player was asked for, stay
    // as they were chosen in the status menu.
    if (StreamPlayer* const streamPlayer = m_content.player.player.get())
        streamPlayer->pause();
    m_content.sonos.playZofra(roomId);
}

void PanelActions::chooseEverywhere() {
    m_content.sonos.selectTarget(AudioOutputTarget::sonosEverywhere());
}

void PanelActions::search() {
    m_content.sonos.discoverDevices(true);
}

void PanelActions::openLocalNetworkSettings() {
    m_workspace.open(
        QUrl(QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_LocalNetwork")));
}

void PanelActions::togglePlayPause() {
    m_content.sonos.togglePlayPause();
}

void PanelActions::setVolume(float volume) {
    m_content.player.applyVolume(volume);
    const std::optional<int> percent = shownPercent(volume);
    if (!percent)
        return;
    SonosManager& sonos = m_content.sonos;
    const AudioOutputTarget target = sonos.activeTarget;
    switch (target.kind()) {
    case AudioOutputTarget::Kind::localMac:
        break;
    case AudioOutputTarget::Kind::sonos:
        if (const std::optional<SonosRoom> room = sonos.room(target.roomId()))
            sonos.setVolume(*percent, *room);
        break;
    case AudioOutputTarget::Kind::sonosEverywhere:
        sonos.setVolumeEverywhere(*percent);
        break;
    }
}

void PanelActions::writeToUs() {
    m_workspace.open(QUrl(QStringLiteral("mailto:hello@zofra.example")));
}

void PanelActions::close() {
    // A copy, for it may end the panel and this object with it.
    const auto onClose = m_content.onClose;
    if (onClose)
        onClose();
}

bool PanelActions::isLaunchedAtLogin() const {
    return m_loginItem.isEnabled();
}

void PanelActions::updateLaunchAtLogin(bool enabled) {
    if (m_loginItem.isEnabled() == enabled)
        return;
    const auto done = enabled ? m_loginItem.registerItem() : m_loginItem.unregisterItem();
    if (!done)
        m_output.writeLine(QStringLiteral("Error changing launch at login status: ") + done.error());
}

} // namespace zofra
