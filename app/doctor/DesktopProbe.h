// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/PanelFindings.h"
#include "app/doctor/ProgramFindings.h"

#include <QDBusConnection>

#include <optional>

namespace zofra::doctor {

/// Fills in what the session bus can tell; waits a few seconds at most. Belongs to a background thread.
void askForPanel(DesktopFacts& facts, const QDBusConnection& bus);

/// Asks the running program, where there is one, for its state. Belongs to a background thread.
[[nodiscard]] ProgramFacts askForProgram(const std::optional<QDBusConnection>& bus,
                                         const QString& ownVersion);

} // namespace zofra::doctor
