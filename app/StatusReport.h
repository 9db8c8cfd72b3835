// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"

#include <QJsonObject>
#include <QString>

namespace zofra {

/// The object that `--status --json` prints at the moment `now`.
[[nodiscard]] QJsonObject toJson(const RadioState& state, const QString& version, TimePoint now);
/// What `--status` prints of that object, a line for each field.
[[nodiscard]] QString statusLines(const QJsonObject& report);

} // namespace zofra
