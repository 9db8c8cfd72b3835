// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/QtMainQueue.h"

#include <QMetaObject>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <deque>
#include <mutex>
#include <utility>

namespace zofra {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// What Qt's timers can count.
milliseconds bounded(milliseconds interval) {
    return std::clamp(interval, milliseconds(0), milliseconds(std::chrono::hours(24 * 20)));
}

class QtTimer final : public Timer {
public:
    QtTimer(milliseconds interval, MainQueue::Repeat repeat, MainQueue::Work handler) {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setSingleShot(repeat == MainQueue::Repeat::once);
        // The handler may destroy the timer, and with it what it has captured.
        auto shared = std::make_shared<MainQueue::Work>(std::move(handler));
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [shared] {
            const auto kept = shared; // NOLINT(performance-unnecessary-copy-initialization)
            (*kept)();
        });
        m_timer.start(bounded(interval));
    }

private:
    QTimer m_timer;
};

} // namespace

/// Shared with whoever is posting at the moment when the queue ends.
class QtMainQueue::State final : public std::enable_shared_from_this<State> {
public:
    void post(Work work) {
        const std::scoped_lock lock(m_mutex);
        if (!m_receiver)
            return;
        m_posted.push_back(std::move(work));
        schedule();
    }

    void postAt(steady_clock::time_point due, Work work) {
        post([this, due, work = std::move(work)] {
            if (m_receiver)
                QTimer::singleShot(bounded(std::chrono::ceil<milliseconds>(due - steady_clock::now())),
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
                m_receiver.get(), [self = shared_from_this()] { self->runPosted(); }, Qt::QueuedConnection);
    }

    /// Runs what is posted now; what comes meanwhile waits for the next turn, so that events are not starved.
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

QtMainQueue::QtMainQueue()
    : m_state(std::make_shared<State>()) {}

QtMainQueue::~QtMainQueue() {
    m_state->end();
}

void QtMainQueue::async(Work work) {
    m_state->post(std::move(work));
}

void QtMainQueue::asyncAfter(milliseconds delay, Work work) {
    m_state->postAt(steady_clock::now() + delay, std::move(work));
}

std::unique_ptr<Timer> QtMainQueue::startTimer(milliseconds interval, Repeat repeat, Work handler) {
    return std::make_unique<QtTimer>(interval, repeat, std::move(handler));
}

} // namespace zofra
