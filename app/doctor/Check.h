// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Finding.h"
#include "platform/MainQueue.h"
#include "platform/TaskPool.h"

#include <functional>
#include <memory>
#include <utility>

namespace zofra::doctor {

/// Something to look at. Main thread only.
class Check {
public:
    /// To be called once, on the main thread, never in place.
    using Done = std::function<void(Findings)>;
    virtual ~Check() = default;

    /// Starts looking and returns at once. It goes on in the background, also when this object ends; then
    /// `done` is not called any more.
    virtual void start(Done done) = 0;
    /// What there is to say when the time is up first.
    [[nodiscard]] virtual Findings soFar() const = 0;
};

/// A check that waits for what it looks at, on a thread of its own.
class BackgroundCheck final : public Check {
public:
    using Work = std::function<Findings()>;
    /// `work` runs on a thread of `tasks`; it must not use what may end before the process does.
    BackgroundCheck(TaskPool& tasks, MainQueue& mainQueue, Finding unfinished, Work work)
        : m_tasks(tasks)
        , m_mainQueue(mainQueue)
        , m_unfinished(std::move(unfinished))
        , m_work(std::move(work)) {}

    void start(Done done) override {
        m_done = std::make_shared<Done>(std::move(done));
        m_tasks.async([work = m_work, &queue = m_mainQueue, weak = std::weak_ptr(m_done)] {
            queue.async([weak, findings = work()] {
                if (const auto alive = weak.lock())
                    (*alive)(findings);
            });
        });
    }
    [[nodiscard]] Findings soFar() const override { return {m_unfinished}; }

private:
    TaskPool& m_tasks;
    MainQueue& m_mainQueue;
    Finding m_unfinished;
    Work m_work;
    std::shared_ptr<Done> m_done;
};

} // namespace zofra::doctor
