// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>

namespace zofra {

/// A point in wall-clock time; on-air times are seconds since 1970 on the same scale.
using TimePoint = std::chrono::system_clock::time_point;

/// A clock: answers the current time. Callable from any thread.
using Clock = std::function<TimePoint()>;

/// The system's clock.
[[nodiscard]] inline Clock systemClock() {
    return [] { return std::chrono::system_clock::now(); };
}

} // namespace zofra
