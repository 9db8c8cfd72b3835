// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/TaskPool.h"
#include "platform/linux/DetachedThread.h"

#include <functional>
#include <memory>

namespace zofra {

/// A background thread for each task: those that wait for others never take a thread away from them. A task
/// for which the system has no thread to give waits, and is tried again every second. Nobody ever waits for
/// the threads; they end with their task.
///
/// One more thread starts the others and lasts: while libraries are being loaded the C library lets whoever
/// starts a thread wait, and the caller may be the main thread.
class ThreadTaskPool final : public TaskPool {
public:
    using Work = std::function<void()>;
    /// Runs `work` on a thread of its own; false when there is none to be had.
    using StartThread = std::function<bool(const Work& work)>;

    /// `mainQueue` outlives every task.
    explicit ThreadTaskPool(MainQueue& mainQueue, StartThread startThread = startDetachedThread);

    /// From any thread.
    void async(Work work) override;

private:
    struct Starter;

    std::shared_ptr<Starter> m_starter;
};

} // namespace zofra
