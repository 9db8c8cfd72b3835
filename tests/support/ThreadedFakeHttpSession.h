// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace zofra::test {

/// A session that answers on a thread of its own, like a real one: at once with `answer`, or, while it is
/// held, when the test lets it. Destroying it lets go of what is still open, uncalled.
class ThreadedFakeHttpSession final : public HttpSession {
public:
    using Answer = std::function<HttpResult(const HttpRequest&)>;
    enum class Start { answering, held };

    ThreadedFakeHttpSession(Answer answer, Start start)
        : m_answer(std::move(answer))
        , m_credit(start == Start::held ? 0 : unlimited)
        , m_thread([this] { run(); }) {}
    ThreadedFakeHttpSession(const ThreadedFakeHttpSession&) = delete;
    ThreadedFakeHttpSession& operator=(const ThreadedFakeHttpSession&) = delete;
    ~ThreadedFakeHttpSession() override {
        {
            const std::scoped_lock lock(m_mutex);
            m_ends = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }

    void start(HttpRequest request, Completion completion) override {
        {
            const std::scoped_lock lock(m_mutex);
            m_requests.push_back(request);
            m_open.push_back({std::move(request), std::move(completion)});
            m_mostOpen = std::max(m_mostOpen, m_open.size() + (m_answering ? 1 : 0));
        }
        m_changed.notify_all();
    }

    /// Waits until this many requests have been started in all; false when that takes longer than 20 s.
    [[nodiscard]] bool waitForRequests(std::size_t count) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return m_requests.size() >= count; });
    }
    /// Lets the session answer this many of the held requests.
    void letAnswer(std::size_t count) {
        {
            const std::scoped_lock lock(m_mutex);
            m_credit += count;
        }
        m_changed.notify_all();
    }
    /// Ends the hold.
    void letAnswerAll() {
        {
            const std::scoped_lock lock(m_mutex);
            m_credit = unlimited;
        }
        m_changed.notify_all();
    }

    [[nodiscard]] std::size_t mostOpen() const {
        const std::scoped_lock lock(m_mutex);
        return m_mostOpen;
    }
    [[nodiscard]] std::vector<HttpRequest> requests() const {
        const std::scoped_lock lock(m_mutex);
        return m_requests;
    }

private:
    static constexpr std::size_t unlimited = 1U << 30U;
    struct Exchange {
        HttpRequest request;
        Completion completion;
    };

    void run() {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return m_ends || (!m_open.empty() && m_credit > 0); });
            if (m_ends)
                return;
            --m_credit;
            m_answering = true;
            {
                auto exchange = std::move(m_open.front());
                m_open.pop_front();
                lock.unlock();
                auto result = m_answer(exchange.request);
                lock.lock();
                // No longer under way by the time that anyone hears of the answer.
                m_answering = false;
                lock.unlock();
                exchange.completion(std::move(result));
            }
            lock.lock();
        }
    }

    Answer m_answer;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Exchange> m_open;
    std::vector<HttpRequest> m_requests;
    std::size_t m_mostOpen = 0;
    std::size_t m_credit;
    bool m_answering = false;
    bool m_ends = false;
    std::thread m_thread;
};

} // namespace zofra::test
