// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace zofra {

/// A running timer. Destroying it stops it; its handler is never called afterwards. Main thread only.
class Timer {
public:
    virtual ~Timer() = default;
};

/// Where everything that touches visible state runs: the queue of the main thread.
class MainQueue {
public:
    using Work = std::function<void()>;
    enum class Repeat { once, forever };

    virtual ~MainQueue() = default;

    /// Runs `work` later on the main thread, in the order posted, never in place. Callable from any thread.
    virtual void async(Work work) = 0;

    /// Runs `work` on the main thread after `delay`; cannot be taken back. Callable from any thread.
    virtual void asyncAfter(std::chrono::milliseconds delay, Work work) = 0;

    /// Starts a timer whose first call comes one `interval` from now. Main thread only.
    [[nodiscard]] virtual std::unique_ptr<Timer> startTimer(std::chrono::milliseconds interval, Repeat repeat,
                                                            Work handler) = 0;
};

} // namespace zofra
