// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/IdleSteps.h"

#include <iterator>
#include <utility>

namespace zofra {

void runIdleSteps(MainQueue& queue, IdleSteps steps) {
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
