// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/AppLanguage.h"

#include <QString>

namespace zofra {

/// The panel's own texts in the languages of the user interface. Composed ones come from LanguageManager.
namespace panelText {

/// "Version " and the version; the same in every language.
[[nodiscard]] QString version(const QString& version);
/// The language's own name, whatever the current language.
[[nodiscard]] QString languageName(AppLanguage language);
[[nodiscard]] QString stationLabel(AppLanguage language);
[[nodiscard]] QString nowPlaying(AppLanguage language);
[[nodiscard]] QString upNext(AppLanguage language);
[[nodiscard]] QString outputLabel(AppLanguage language);
[[nodiscard]] QString thisMac(AppLanguage language);
[[nodiscard]] QString everywhere(AppLanguage language);
[[nodiscard]] QString search(AppLanguage language);
[[nodiscard]] QString allowLocalNetwork(AppLanguage language);
[[nodiscard]] QString synchronizationNote(AppLanguage language);
[[nodiscard]] QString play(AppLanguage language);
[[nodiscard]] QString stop(AppLanguage language);
/// What a screen reader calls the slider.
[[nodiscard]] QString volume(AppLanguage language);
/// For example "80 %".
[[nodiscard]] QString volumePercent(int percent);
[[nodiscard]] QString credit(AppLanguage language);
[[nodiscard]] QString writeToUs(AppLanguage language);
[[nodiscard]] QString startAutomatically(AppLanguage language);
[[nodiscard]] QString closeWindow(AppLanguage language);

} // namespace panelText

} // namespace zofra
