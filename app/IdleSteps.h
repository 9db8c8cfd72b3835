// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"

#include <chrono>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

namespace zofra {

/// Work for moments in which nobody waits: short steps, with room between them for what is asked meanwhile.
using IdleSteps = std::vector<std::function<void()>>;

/// The room between two steps.
constexpr auto idlePause = std::chrono::milliseconds(20);

/// Runs `steps` in their order on the main queue, the first after a pause too. Each goes once it has run.
inline void runIdleSteps(MainQueue& queue, IdleSteps steps) {
    if (steps.empty())
        return;
    queue.asyncAfter(idlePause, [&queue, steps = std::move(steps)]() mutable {
        const auto step = std::move(steps.front());
        IdleSteps rest(std::make_move_iterator(steps.begin() + 1), std::make_move_iterator(steps.end()));
        steps.clear();
        step();
        runIdleSteps(queue, std::move(rest));
    });
}

} // namespace zofra
