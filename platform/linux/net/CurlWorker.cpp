// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/CurlWorker.h"

#include "platform/linux/net/CurlGlobal.h"
#include "platform/linux/net/LocalHost.h"

#include <csignal>
#include <pthread.h>
#include <thread>
#include <utility>

namespace zofra {

namespace {

constexpr std::size_t maxRunning = 64;
constexpr std::size_t maxRunningLocal = 48;
/// Connections kept open for a next request.
constexpr long maxKeptConnections = 8;
/// How long to sleep when there is nothing to do; a submission or a stop wakes the thread.
constexpr int idleMilliseconds = 3'600'000;

/// Signals belong to the main thread; and a write to a connection that the peer has closed must not end the
/// process.
void blockSignals() {
    sigset_t signals;
    sigfillset(&signals);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP})
        sigdelset(&signals, fault);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace

CurlWorker::CurlWorker(std::optional<QString> extraAuthorityFile)
    : m_extraAuthorityFile(std::move(extraAuthorityFile)) {}

void CurlWorker::submit(HttpRequest request, HttpSession::Completion completion) {
    const std::scoped_lock lock(m_mutex);
    if (m_isStopping)
        return;
    m_submitted.push_back({std::move(request), std::move(completion)});
    if (m_wakeable != nullptr)
        curl_multi_wakeup(m_wakeable);
    if (!std::exchange(m_isStarted, true))
        std::thread([self = shared_from_this()] { self->run(); }).detach();
}

void CurlWorker::stop() {
    {
        const std::scoped_lock lock(m_mutex);
        m_isStopping = true;
        if (m_wakeable != nullptr)
            curl_multi_wakeup(m_wakeable);
    }
    const std::scoped_lock lock(m_completionMutex);
    m_isSilenced = true;
}

void CurlWorker::run() {
    pthread_setname_np(pthread_self(), "zofra-http");
    blockSignals();
    {
        const CurlGlobal::Pass pass;
        CurlGlobal::initialise();
    }
    {
        const CurlGlobal::Pass pass;
        const auto* info = curl_version_info(CURLVERSION_NOW);
        m_authorities = TrustedAuthorities::find(m_extraAuthorityFile, QByteArray(info->cainfo));
        m_multi = curl_multi_init();
        curl_multi_setopt(m_multi, CURLMOPT_MAXCONNECTS, maxKeptConnections);
        const std::scoped_lock lock(m_mutex);
        m_wakeable = m_multi;
    }
    while (takeSubmitted()) {
        {
            const CurlGlobal::Pass pass;
            do {
                startWaiting();
                int running = 0;
                curl_multi_perform(m_multi, &running);
            } while (finishDone());
        }
        curl_multi_poll(m_multi, nullptr, 0, idleMilliseconds, nullptr);
    }
    const CurlGlobal::Pass pass;
    shutDown();
}

/// False once the session has ended.
bool CurlWorker::takeSubmitted() {
    const std::scoped_lock lock(m_mutex);
    for (auto& job : m_submitted)
        (isLocalHost(job.request.url.host()) ? m_waitingLocal : m_waiting).push_back(std::move(job));
    m_submitted.clear();
    return !m_isStopping;
}

void CurlWorker::startWaiting() {
    while (!m_waiting.empty() && m_running.size() < maxRunning)
        startFrom(m_waiting, false);
    while (!m_waitingLocal.empty() && m_running.size() < maxRunning && m_runningLocal < maxRunningLocal)
        startFrom(m_waitingLocal, true);
}

void CurlWorker::startFrom(std::deque<Job>& waiting, bool isLocal) {
    auto job = std::move(waiting.front());
    waiting.pop_front();
    auto transfer = std::make_unique<CurlTransfer>(std::move(job.request), m_authorities);
    if (auto refusal = transfer->refusal()) {
        complete(job.completion, {std::nullopt, std::move(refusal)});
        return;
    }
    auto* const easy = transfer->easy();
    if (curl_multi_add_handle(m_multi, easy) != CURLM_OK) {
        complete(job.completion, transfer->result(CURLE_FAILED_INIT));
        return;
    }
    m_running.emplace(easy, Running{std::move(transfer), std::move(job.completion), isLocal});
    m_runningLocal += isLocal ? 1 : 0;
}

/// True when something has ended, so that there may be room for what waits.
bool CurlWorker::finishDone() {
    bool any = false;
    int left = 0;
    while (const auto* message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const auto code = message->data.result;
        auto node = m_running.extract(message->easy_handle);
        curl_multi_remove_handle(m_multi, node.key());
        auto& running = node.mapped();
        m_runningLocal -= running.isLocal ? 1 : 0;
        complete(running.completion, running.transfer->result(code));
        any = true;
    }
    return any;
}

void CurlWorker::complete(const HttpSession::Completion& completion, HttpResult result) {
    const std::scoped_lock lock(m_completionMutex);
    if (!m_isSilenced && completion)
        completion(std::move(result));
}

void CurlWorker::shutDown() {
    {
        const std::scoped_lock lock(m_mutex);
        m_wakeable = nullptr;
    }
    for (auto& [easy, running] : m_running)
        curl_multi_remove_handle(m_multi, easy);
    m_running.clear();
    curl_multi_cleanup(m_multi);
}

} // namespace zofra
