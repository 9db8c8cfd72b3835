// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"

#include <QMetaObject>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

namespace zofra {

/// The main queue on Qt's event loop. Made on the main thread; timers are precise to the millisecond. It may
/// outlive the application object: what is posted then is kept and never runs.
class QtMainQueue final : public MainQueue {
public:
    QtMainQueue() = default;
    ~QtMainQueue() override { m_state->end(); }
    QtMainQueue(const QtMainQueue&) = delete;
    QtMainQueue& operator=(const QtMainQueue&) = delete;

    void async(Work work) override { m_state->post(std::move(work)); }
    void asyncAfter(std::chrono::milliseconds delay, Work work) override {
        m_state->postAt(Clock::now() + delay, std::move(work));
    }
    [[nodiscard]] std::unique_ptr<Timer> startTimer(std::chrono::milliseconds interval, Repeat repeat,
                                                    Work handler) override {
        return std::make_unique<QtTimer>(interval, repeat, std::move(handler));
    }

private:
    using Clock = std::chrono::steady_clock;

    /// What Qt's timers can count.
    static std::chrono::milliseconds bounded(std::chrono::milliseconds interval) {
        return std::clamp<std::chrono::milliseconds>(interval, std::chrono::milliseconds(0),
                                                     std::chrono::hours(24 * 20));
    }

    class QtTimer final : public Timer {
    public:
        QtTimer(std::chrono::milliseconds interval, Repeat repeat, Work handler) {
            m_timer.setTimerType(Qt::PreciseTimer);
            m_timer.setSingleShot(repeat == Repeat::once);
            // The handler may destroy the timer, and with it what it has captured.
            auto shared = std::make_shared<Work>(std::move(handler));
            QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [shared] {
                const auto kept = shared; // NOLINT(performance-unnecessary-copy-initialization)
                (*kept)();
            });
            m_timer.start(bounded(interval));
        }

    private:
        QTimer m_timer;
    };

    /// Shared with whoever is posting at the moment when the queue ends.
    class State final : public std::enable_shared_from_this<State> {
    public:
        void post(Work work) {
            const std::scoped_lock lock(m_mutex);
            if (!m_receiver)
                return;
            m_posted.push_back(std::move(work));
            schedule();
        }

        void postAt(Clock::time_point due, Work work) {
            post([this, due, work = std::move(work)] {
                if (m_receiver)
                    QTimer::singleShot(
                        bounded(std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now())),
                        Qt::PreciseTimer, m_receiver.get(), work);
            });
        }

        void end() {
            std::deque<Work> dropped;
            std::unique_ptr<QObject> receiver;
            const std::scoped_lock lock(m_mutex);
            dropped.swap(m_posted);
            receiver.swap(m_receiver);
        }

    private:
        /// With the mutex held.
        void schedule() {
            if (!std::exchange(m_isScheduled, true))
                QMetaObject::invokeMethod(
                    m_receiver.get(), [self = shared_from_this()] { self->runPosted(); },
                    Qt::QueuedConnection);
        }

        /// Runs what is posted now; what comes meanwhile waits for the next turn, so that events are not
        /// starved.
        void runPosted() {
            std::unique_lock lock(m_mutex);
            m_isScheduled = false;
            for (auto count = m_posted.size(); count > 0 && !m_posted.empty(); --count) {
                {
                    const auto work = std::move(m_posted.front());
                    m_posted.pop_front();
                    // Also wakes an event loop that `work` may run inside this one.
                    if (!m_posted.empty())
                        schedule();
                    lock.unlock();
                    work();
                }
                lock.lock();
            }
        }

        std::mutex m_mutex;
        std::deque<Work> m_posted;
        bool m_isScheduled = false;
        /// Where the event loop's wake-ups arrive, on the main thread.
        std::unique_ptr<QObject> m_receiver = std::make_unique<QObject>();
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace zofra
