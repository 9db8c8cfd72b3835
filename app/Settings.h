// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"

#include <QString>

namespace zofra {

// Switches that stand in the settings file only.

/// Each new song is a message of the desktop's; off unless it is set.
inline const QString announceSongsKey = u"notifications/songs"_qs;
/// The songs that were played are noted; on unless it is set off.
inline const QString keepHistoryKey = u"history/enabled"_qs;
/// The computer does not go to sleep by itself while it plays; off unless it is set.
inline const QString inhibitIdleKey = u"session/inhibit_idle"_qs;

/// "true", "on", "yes", "1" are on, "false", "off", "no", "0" are off; anything else is as good as none.
[[nodiscard]] inline bool isOn(const DefaultsStore& defaults, const QString& key, bool otherwise) {
    const QString value = defaults.string(key).value_or(QString()).trimmed().toLower();
    const auto isOneOf = [&](auto... words) { return ((value == QLatin1String(words)) || ...); };
    return isOneOf("true", "on", "yes", "1") || (otherwise && !isOneOf("false", "off", "no", "0"));
}

} // namespace zofra
