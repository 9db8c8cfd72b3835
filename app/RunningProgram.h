// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Options.h"
#include "platform/linux/ApplicationBus.h"

#include <QDBusConnection>

#include <optional>

namespace zofra {

// What a second start does with the program that runs already. Each answers an exit status.

/// Asks the running program for what `options` want to know, or to end, without becoming one.
[[nodiscard]] int askRunning(const std::optional<QDBusConnection>& bus, const Options& options);
/// Has the running program do what `options` say; without any, it shows the panel.
[[nodiscard]] int handOver(const QDBusConnection& bus, const Options& options, const Activation& activation);

} // namespace zofra
