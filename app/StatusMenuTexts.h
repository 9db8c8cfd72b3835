// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/AppLanguage.h"

#include <QString>

namespace zofra::menutexts {

// The texts that only the status-bar menu has, in the four languages.

[[nodiscard]] QString playStop(bool isPlaying, AppLanguage language);
[[nodiscard]] QString playStopIcon(bool isPlaying, AppLanguage language);
[[nodiscard]] QString stationIcon(AppLanguage language);
[[nodiscard]] QString outputIcon(AppLanguage language);
[[nodiscard]] QString thisComputer(AppLanguage language);
[[nodiscard]] QString allowLocalNetwork(AppLanguage language);
[[nodiscard]] QString playEverywhere(AppLanguage language);
[[nodiscard]] QString playEverywhereToolTip(AppLanguage language);
[[nodiscard]] QString search(AppLanguage language);
[[nodiscard]] QString mute(AppLanguage language);
[[nodiscard]] QString volumeIcon(AppLanguage language);
[[nodiscard]] QString nowPlayingIcon(AppLanguage language);
[[nodiscard]] QString upNextIcon(AppLanguage language);
[[nodiscard]] QString about(AppLanguage language);
[[nodiscard]] QString quit(AppLanguage language);

} // namespace zofra::menutexts
