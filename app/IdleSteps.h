// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"

#include <chrono>
#include <functional>
#include <vector>

namespace zofra {

/// Work for moments in which nobody waits: each step is short, and between two of them there is room for
/// whatever has been asked for meanwhile.
using IdleSteps = std::vector<std::function<void()>>;

/// The room between two steps.
constexpr auto idlePause = std::chrono::milliseconds(20);

/// Runs `steps` in their order on the main queue, the first after a pause too. Each step is let go of once it
/// has run.
void runIdleSteps(MainQueue& queue, IdleSteps steps);

} // namespace zofra
