// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/InterfaceInfo.h"
#include "speakers/SpeakerBackground.h"

#include <QSet>
#include <QUrl>

namespace zofra {

/// Asks one interface's network for players and listens for two and a half seconds. Gives the description
/// addresses that the answers name, at most `SpeakerBackground::maxAddresses`. For background threads.
[[nodiscard]] QSet<QUrl> searchViaSSDP(SpeakerBackground& background, const InterfaceInfo& interface);

} // namespace zofra
