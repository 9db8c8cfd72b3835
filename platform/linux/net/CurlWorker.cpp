// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/CurlWorker.h"

#include "platform/linux/DetachedThread.h"
#include "platform/linux/net/CurlGlobal.h"
#include "platform/linux/net/LocalHost.h"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <pthread.h>
#include <utility>

namespace zofra {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t maxRunning = 64;
constexpr std::size_t maxRunningLocal = 48;
/// Connections kept open for a next request.
constexpr long maxKeptConnections = 8;
/// How long to sleep when there is nothing to do; a submission or a stop wakes the thread.
constexpr std::chrono::milliseconds idleTime = 1h;

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
    : m_extraAuthorityFile(std::move(extraAuthorityFile))
    , m_keptSince(std::chrono::steady_clock::time_point()) {}

void CurlWorker::submit(HttpRequest request, HttpSession::Completion completion) {
    const bool isLocal = request.route == HttpRequest::Route::direct || isLocalHost(request.url.host());
    const std::scoped_lock lock(m_mutex);
    if (m_isStopping)
        return;
    m_submitted.push_back({std::move(request), std::move(completion), isLocal});
    wake();
}

void CurlWorker::post(Work work) {
    const std::scoped_lock lock(m_mutex);
    if (m_isStopping)
        return;
    m_posted.push_back(std::move(work));
    wake();
}

void CurlWorker::stop() {
    {
        const std::scoped_lock lock(m_mutex);
        m_isStopping = true;
        if (m_wakeable != nullptr)
            curl().multiWakeup(m_wakeable);
    }
    const std::scoped_lock lock(m_completionMutex);
    m_isSilenced = true;
}

void CurlWorker::wake() {
    if (m_wakeable != nullptr)
        curl().multiWakeup(m_wakeable);
    m_isStarted = m_isStarted || startDetachedThread([self = shared_from_this()] { self->run(); });
    if (!m_isStarted)
        refuse(std::exchange(m_submitted, {}), u"No thread could be started for requests."_qs);
}

/// Never in place: whoever submits may hold locks that its completions take.
void CurlWorker::refuse(std::deque<Job> jobs, const QString& why) {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [self = shared_from_this(), jobs = std::make_shared<std::deque<Job>>(std::move(jobs)), why] {
            const HttpError reason{HttpError::Code::other, 0, why};
            for (const auto& job : *jobs)
                self->complete(job, failure(reason));
        },
        Qt::QueuedConnection);
}

void CurlWorker::run() {
    pthread_setname_np(pthread_self(), "zofra-http");
    blockSignals();
    if (!setUp())
        return;
    while (takeSubmitted()) {
        std::chrono::milliseconds patience = idleTime;
        {
            const CurlGlobal::Pass pass;
            runPosted();
            giveUpCancelled();
            do {
                startWaiting();
                int running = 0;
                curl().multiPerform(m_multi, &running);
            } while (finishDone());
            patience = stepConnections();
        }
        curl().multiPoll(m_multi, m_waits.data(), static_cast<unsigned>(m_waits.size()),
                         static_cast<int>(patience.count()), nullptr);
    }
    const CurlGlobal::Pass pass;
    shutDown();
}

/// False without libcurl, and when there are too few descriptors: a loop that cannot be woken would never
/// end.
bool CurlWorker::setUp() {
    {
        const CurlGlobal::Pass pass;
        CurlGlobal::initialise();
    }
    const CurlGlobal::Pass pass;
    m_multi = curl().multiInit();
    const std::scoped_lock lock(m_mutex);
    if (m_multi != nullptr && curl().multiWakeup(m_multi) == CURLM_OK) {
        curl().multiSetopt(m_multi, CURLMOPT_MAXCONNECTS, maxKeptConnections);
        m_wakeable = m_multi;
        return true;
    }
    if (m_multi != nullptr)
        curl().multiCleanup(std::exchange(m_multi, nullptr));
    m_isStarted = false;
    const auto why = curl().problem.value_or(u"There are too few descriptors for requests."_qs);
    static std::atomic<bool> isTold = false;
    if (curl().problem && !isTold.exchange(true))
        std::fprintf(stderr, "zofrazofra: %s\n", qUtf8Printable(why));
    refuse(std::exchange(m_submitted, {}), why);
    return false;
}

/// False once the session has ended.
bool CurlWorker::takeSubmitted() {
    std::deque<Job> taken;
    {
        const std::scoped_lock lock(m_mutex);
        taken = std::exchange(m_submitted, {});
        m_toRun = std::exchange(m_posted, {});
        if (m_isStopping)
            return false;
    }
    for (auto& job : taken) {
        if (job.request.stop.stop_possible())
            job.stopCallback = std::make_unique<StopCallback>(job.request.stop, [this] {
                m_hasCancelled = true;
                post([] {});
            });
        (job.isLocal ? m_waitingLocal : m_waiting).push_back(std::move(job));
    }
    return true;
}

void CurlWorker::runPosted() {
    for (const auto& work : std::exchange(m_toRun, {}))
        work();
}

const TrustedAuthorities& CurlWorker::authorities() {
    if (!m_authorities || !m_authorities->isWhole())
        m_authorities = TrustedAuthorities::find(m_extraAuthorityFile);
    return *m_authorities;
}

void CurlWorker::startWaiting() {
    while (!m_waiting.empty() && m_running.size() < maxRunning)
        startFrom(m_waiting);
    while (!m_waitingLocal.empty() && m_running.size() < maxRunning && m_runningLocal < maxRunningLocal)
        startFrom(m_waitingLocal);
}

void CurlWorker::startFrom(std::deque<Job>& waiting) {
    auto job = std::move(waiting.front());
    waiting.pop_front();
    job.transfer = std::make_unique<CurlTransfer>(std::move(job.request), authorities());
    if (auto refusal = job.transfer->refusal())
        return complete(job, failure(*std::move(refusal)));
    job.transfer->handle().avoidOlderThan(m_keptSince);
    auto* const easy = job.transfer->easy();
    if (curl().multiAddHandle(m_multi, easy) != CURLM_OK)
        return complete(job, job.transfer->result(CURLE_FAILED_INIT));
    m_runningLocal += job.isLocal ? 1 : 0;
    m_running.emplace(easy, std::move(job));
}

/// Those that wait go as well, so that they do not take a turn from others.
void CurlWorker::giveUpCancelled() {
    if (!m_hasCancelled.exchange(false))
        return;
    for (auto* waiting : {&m_waiting, &m_waitingLocal}) {
        for (auto& job : std::exchange(*waiting, {})) {
            if (job.request.stop.stop_requested())
                complete(job, failure(CurlTransfer::cancelled()));
            else
                waiting->push_back(std::move(job));
        }
    }
    std::vector<CURL*> cancelled;
    for (const auto& [easy, job] : m_running) {
        if (job.transfer->stop().stop_requested())
            cancelled.push_back(easy);
    }
    for (auto* const easy : cancelled)
        finish(easy, CURLE_ABORTED_BY_CALLBACK);
}

/// True when something has ended, so that there may be room for what waits.
bool CurlWorker::finishDone() {
    bool any = false;
    int left = 0;
    while (const auto* message = curl().multiInfoRead(m_multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const auto connection = m_connections.find(message->easy_handle);
        if (connection != m_connections.end())
            connection->second->connected(message->data.result);
        else
            finish(message->easy_handle, message->data.result);
        any = true;
    }
    return any;
}

void CurlWorker::finish(CURL* easy, CURLcode code) {
    const auto node = m_running.extract(easy);
    curl().multiRemoveHandle(m_multi, easy);
    const auto& job = node.mapped();
    m_runningLocal -= job.isLocal ? 1 : 0;
    complete(job, job.transfer->result(code));
}

void CurlWorker::adopt(std::shared_ptr<WebSocketConnection> connection) {
    auto* const easy = connection->easy();
    if (curl().multiAddHandle(m_multi, easy) != CURLM_OK)
        connection->connected(CURLE_FAILED_INIT);
    m_connections.emplace(easy, std::move(connection));
}

/// Gives every connection its turn; returns how long the loop may sleep then.
std::chrono::milliseconds CurlWorker::stepConnections() {
    const auto now = std::chrono::steady_clock::now();
    auto until = now + idleTime;
    m_waits.clear();
    for (auto entry = m_connections.begin(); entry != m_connections.end();) {
        const auto& [easy, connection] = *entry;
        const auto wait = connection->step(now);
        if (!wait) {
            // This closes the connection.
            curl().multiRemoveHandle(m_multi, easy);
            connection->released();
            entry = m_connections.erase(entry);
            continue;
        }
        until = std::min(until, wait->until);
        curl_socket_t descriptor = CURL_SOCKET_BAD;
        curl().easyGetinfo(easy, CURLINFO_ACTIVESOCKET, &descriptor);
        if (wait->events != 0 && descriptor != CURL_SOCKET_BAD)
            m_waits.push_back({descriptor, wait->events, 0});
        ++entry;
    }
    return std::max(0ms, std::chrono::ceil<std::chrono::milliseconds>(until - now));
}

void CurlWorker::complete(const Job& job, HttpResult result) {
    const std::scoped_lock lock(m_completionMutex);
    if (!m_isSilenced && job.completion)
        job.completion(std::move(result));
}

void CurlWorker::shutDown() {
    {
        const std::scoped_lock lock(m_mutex);
        m_wakeable = nullptr;
    }
    for (auto& [easy, job] : m_running)
        curl().multiRemoveHandle(m_multi, easy);
    m_running.clear();
    for (auto& [easy, connection] : m_connections) {
        curl().multiRemoveHandle(m_multi, easy);
        connection->released();
    }
    m_connections.clear();
    curl().multiCleanup(m_multi);
}

} // namespace zofra
