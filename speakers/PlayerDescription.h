// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SonosSpeaker.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace zofra::NetworkPlayerProtocol {

/// The player that a device description, fetched from `url`, describes: a visible coordinator of its own.
[[nodiscard]] std::optional<SonosSpeaker> speaker(const QString& description, const QUrl& url);

} // namespace zofra::NetworkPlayerProtocol
