// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "platform/linux/net/CurlTransfer.h"
#include "platform/linux/net/TrustedAuthorities.h"
#include "platform/linux/net/WebSocketConnection.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <unordered_map>
#include <vector>

namespace zofra {

/// The thread of a CurlHttpSession, and its queue. The thread keeps this object alive and outlives the
/// session for as long as it takes to give up what is under way. Where no thread is to be had, or it cannot
/// set itself up, requests fail and whoever comes next tries again.
class CurlWorker : public std::enable_shared_from_this<CurlWorker> {
public:
    using Work = std::function<void()>;

    explicit CurlWorker(std::optional<QString> extraAuthorityFile);

    /// Any thread.
    void submit(HttpRequest request, HttpSession::Completion completion);
    /// Runs `work` on the worker's thread, in the order posted. Any thread.
    void post(Work work);
    /// Kept connections and looked-up addresses are used no more. Any thread.
    void dropKept() { m_keptSince = std::chrono::steady_clock::now(); }
    [[nodiscard]] std::chrono::steady_clock::time_point keptSince() const { return m_keptSince; }
    /// After this no completion is called. Any thread, also from within a completion.
    void stop();

    /// Takes a connection into the loop until it lets go. The worker's thread only, within posted work.
    void adopt(std::shared_ptr<WebSocketConnection> connection);
    /// Whom to trust. The worker's thread only, within posted work.
    [[nodiscard]] const TrustedAuthorities& authorities();

private:
    using StopCallback = std::stop_callback<Work>;
    struct Job {
        HttpRequest request;
        HttpSession::Completion completion;
        bool isLocal = false;
        std::unique_ptr<StopCallback> stopCallback = nullptr;
        /// Has the request while it runs.
        std::unique_ptr<CurlTransfer> transfer = nullptr;
    };

    // With m_mutex held.
    void wake();
    void refuse(std::deque<Job> jobs, const QString& why);

    // All of these on the worker's thread.
    void run();
    [[nodiscard]] bool setUp();
    [[nodiscard]] bool takeSubmitted();
    void runPosted();
    void startWaiting();
    void startFrom(std::deque<Job>& waiting);
    void giveUpCancelled();
    [[nodiscard]] bool finishDone();
    void finish(CURL* easy, CURLcode code);
    [[nodiscard]] std::chrono::milliseconds stepConnections();
    void complete(const Job& job, HttpResult result);
    void shutDown();

    const std::optional<QString> m_extraAuthorityFile;

    std::mutex m_mutex;
    // Guarded by m_mutex.
    std::deque<Job> m_submitted;
    std::deque<Work> m_posted;
    bool m_isStarted = false;
    bool m_isStopping = false;
    CURLM* m_wakeable = nullptr;

    /// Held while a completion is called; recursive, because a completion may end the session.
    std::recursive_mutex m_completionMutex;
    bool m_isSilenced = false;

    std::atomic<std::chrono::steady_clock::time_point> m_keptSince;
    /// A request that was taken has been cancelled since.
    std::atomic<bool> m_hasCancelled = false;

    // The worker's thread only.
    CURLM* m_multi = nullptr;
    std::optional<TrustedAuthorities> m_authorities;
    std::deque<Work> m_toRun;
    std::deque<Job> m_waiting;
    std::deque<Job> m_waitingLocal;
    std::unordered_map<CURL*, Job> m_running;
    std::size_t m_runningLocal = 0;
    std::unordered_map<CURL*, std::shared_ptr<WebSocketConnection>> m_connections;
    std::vector<curl_waitfd> m_waits;
};

} // namespace zofra
