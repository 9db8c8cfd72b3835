// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/PanelFindings.h"
#include "app/doctor/ProgramFindings.h"

#include <QDBusConnection>

#include <optional>

namespace zofra::doctor {

/// Asks the session bus who shows status items; waits for the answers, a few seconds at most. Fills in what
/// the bus can tell. Belongs to a background thread.
void askForPanel(DesktopFacts& facts, const QDBusConnection& bus);

/// Asks for the running program and, when there is one, asks that one for its state. Nothing else is done to
/// it. Belongs to a background thread.
[[nodiscard]] ProgramFacts askForProgram(const std::optional<QDBusConnection>& bus,
                                         const QString& ownVersion);

} // namespace zofra::doctor
