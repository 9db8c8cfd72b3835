// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

namespace zofra {

/// Background threads for work that waits: discovery runs and their searches.
class TaskPool {
public:
    virtual ~TaskPool() = default;

    /// Runs `work` on a background thread. Callable from any thread, also by tasks, which may wait for it.
    virtual void async(std::function<void()> work) = 0;
};

} // namespace zofra
