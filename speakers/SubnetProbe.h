// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SpeakerBackground.h"

#include <QSet>
#include <QString>
#include <QUrl>

#include <memory>

namespace zofra {

/// Asks each address from 1 to 254 of the /24 network around `ip` for a player's description, and gives the
/// addresses where there is one. For background threads: takes up to twelve seconds.
[[nodiscard]] QSet<QUrl> probeSubnet(const std::shared_ptr<SpeakerBackground>& background, const QString& ip);

} // namespace zofra
