// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panel/PanelActions.h"

#include "app/RadioControls.h"
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
    m_content.controls.chooseLanguage(language);
}

void PanelActions::chooseStation(RadioStation station) {
    m_content.controls.chooseStation(station);
}

void PanelActions::chooseThisMac() {
    m_content.controls.chooseThisComputer();
}

void PanelActions::chooseRoom(const QString& roomId) {
    m_content.controls.chooseRoom(roomId);
}

void PanelActions::chooseEverywhere() {
    m_content.controls.chooseEverywhere();
}

void PanelActions::search() {
    m_content.controls.search();
}

void PanelActions::openLocalNetworkSettings() {
    m_content.controls.openLocalNetworkSettings();
}

void PanelActions::togglePlayPause() {
    m_content.controls.toggle();
}

void PanelActions::setVolume(float volume) {
    m_content.controls.setVolume(volume);
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
