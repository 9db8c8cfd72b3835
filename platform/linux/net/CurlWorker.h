// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "platform/linux/net/CurlTransfer.h"
#include "platform/linux/net/TrustedAuthorities.h"

#include <QString>

#include <cstddef>
#include <curl/curl.h>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace zofra {

/// The thread of a CurlHttpSession, and its queue. The thread keeps this object alive and outlives the
/// session for as long as it takes to give up what is under way.
class CurlWorker : public std::enable_shared_from_this<CurlWorker> {
public:
    explicit CurlWorker(std::optional<QString> extraAuthorityFile);
    CurlWorker(const CurlWorker&) = delete;
    CurlWorker& operator=(const CurlWorker&) = delete;

    /// Any thread.
    void submit(HttpRequest request, HttpSession::Completion completion);
    /// After this no completion is called. Any thread, also from within a completion.
    void stop();

private:
    struct Job {
        HttpRequest request;
        HttpSession::Completion completion;
    };
    struct Running {
        std::unique_ptr<CurlTransfer> transfer;
        HttpSession::Completion completion;
        bool isLocal = false;
    };

    // All of these on the worker's thread.
    void run();
    [[nodiscard]] bool takeSubmitted();
    void startWaiting();
    void startFrom(std::deque<Job>& waiting, bool isLocal);
    [[nodiscard]] bool finishDone();
    void complete(const HttpSession::Completion& completion, HttpResult result);
    void shutDown();

    const std::optional<QString> m_extraAuthorityFile;

    std::mutex m_mutex;
    // Guarded by m_mutex.
    std::deque<Job> m_submitted;
    bool m_isStarted = false;
    bool m_isStopping = false;
    CURLM* m_wakeable = nullptr;

    /// Held while a completion is called; recursive, because a completion may end the session.
    std::recursive_mutex m_completionMutex;
    bool m_isSilenced = false;

    // The worker's thread only.
    CURLM* m_multi = nullptr;
    TrustedAuthorities m_authorities;
    std::deque<Job> m_waiting;
    std::deque<Job> m_waitingLocal;
    std::unordered_map<CURL*, Running> m_running;
    std::size_t m_runningLocal = 0;
};

} // namespace zofra
