// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Finding.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/TaskPool.h"

#include <functional>
#include <utility>

namespace zofra::doctor {

/// Something to look at. Main thread only.
class Check {
public:
    /// To be called once, on the main thread, never in place.
    using Done = std::function<void(Findings)>;
    virtual ~Check() = default;

    /// Starts looking in the background; `done` is not called once this object has ended.
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
        m_done = std::move(done);
        auto tell = m_lifetime.guard([this](const Findings& findings) { m_done(findings); });
        m_tasks.async([work = m_work, &queue = m_mainQueue, tell] {
            queue.async([tell, findings = work()]() mutable { tell(findings); });
        });
    }
    [[nodiscard]] Findings soFar() const override { return {m_unfinished}; }

private:
    TaskPool& m_tasks;
    MainQueue& m_mainQueue;
    Finding m_unfinished;
    Work m_work;
    Done m_done;
    Lifetime m_lifetime;
};

} // namespace zofra::doctor
