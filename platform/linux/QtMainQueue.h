// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"

#include <memory>

namespace zofra {

/// The main queue on Qt's event loop. Made on the main thread; timers are precise to the millisecond. It may
/// outlive the application object: what is posted then is kept and never runs.
class QtMainQueue final : public MainQueue {
public:
    QtMainQueue();
    ~QtMainQueue() override;
    QtMainQueue(const QtMainQueue&) = delete;
    QtMainQueue& operator=(const QtMainQueue&) = delete;

    void async(Work work) override;
    void asyncAfter(std::chrono::milliseconds delay, Work work) override;
    [[nodiscard]] std::unique_ptr<Timer> startTimer(std::chrono::milliseconds interval, Repeat repeat,
                                                    Work handler) override;

private:
    class State;
    std::shared_ptr<State> m_state;
};

} // namespace zofra
