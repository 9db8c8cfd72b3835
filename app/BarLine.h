// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"
#include "stations/LanguageManager.h"

#include <QJsonObject>
#include <QString>

namespace zofra {

/// What a status bar is given of `state`: `text`, `tooltip` (lines), `class` ("playing", "buffering" or
/// "stopped") and `percentage` (the volume).
[[nodiscard]] QJsonObject barLine(const RadioState& state, const LanguageManager& languages);
/// The same while the program does not run: no text, the class "off".
[[nodiscard]] QJsonObject emptyBarLine();
/// The text alone, for bars that take lines. Some bars act on what they find between braces after a percent
/// sign; a song's title must not be able to.
[[nodiscard]] QString plainBarLine(const QJsonObject& line);

} // namespace zofra
