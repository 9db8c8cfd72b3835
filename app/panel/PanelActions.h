// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/PopupWindow.h"
#include "platform/LoginItem.h"
#include "platform/SystemLog.h"
#include "platform/Workspace.h"
#include "stations/AppLanguage.h"
#include "stations/RadioStation.h"

#include <QString>

#include <optional>

namespace zofra {

/// The percentage that a volume is shown and sent as: computed in 32 bits, then cut. Absent when there is no
/// such number.
[[nodiscard]] std::optional<int> shownPercent(float volume);

/// What the panel's controls do: the calls and their order, nothing seen. Main thread only.
class PanelActions {
public:
    /// All of it outlives the actions; `content` is the panel's own.
    PanelActions(const PopupPanelContent& content, LoginItem& loginItem, StandardOutput& output,
                 Workspace& workspace);

    /// Whether wherever the sound goes is playing.
    [[nodiscard]] bool isPlaying() const;

    void chooseLanguage(AppLanguage language);
    void chooseStation(RadioStation station);
    void chooseThisMac();
    void chooseRoom(const QString& roomId);
    void chooseEverywhere();
    void search();
    void openLocalNetworkSettings();
    void togglePlayPause();
    /// `volume` as the slider gives it, 0 to 1.
    void setVolume(float volume);
    void writeToUs();
    void close();

    /// Read anew at each call.
    [[nodiscard]] bool isLaunchedAtLogin() const;
    /// Registers or unregisters the program where that changes anything; a failure is one line on standard
    /// output.
    void updateLaunchAtLogin(bool enabled);

private:
    const PopupPanelContent& m_content;
    LoginItem& m_loginItem;
    StandardOutput& m_output;
    Workspace& m_workspace;
};

} // namespace zofra
