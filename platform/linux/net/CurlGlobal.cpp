// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/CurlGlobal.h"

#include <cstdlib>
#include <mutex>
#include <unistd.h>

namespace zofra {

namespace {

struct Gate {
    std::shared_mutex mutex;
    bool isClosed = false;
    /// One lock does for all sessions.
    std::mutex sessions;
};

/// Never destroyed: threads may come to it until the very end.
Gate& gate() {
    static auto* const instance = new Gate;
    return *instance;
}

void closeGate() {
    const std::unique_lock lock(gate().mutex);
    gate().isClosed = true;
}

CURLSH* makeTlsSessions() {
    CURLSH* share = curl_share_init();
    if (share == nullptr)
        return nullptr;
    curl_share_setopt(
        share, CURLSHOPT_LOCKFUNC, +[](CURL*, curl_lock_data data, curl_lock_access, void*) {
            if (data == CURL_LOCK_DATA_SSL_SESSION)
                gate().sessions.lock();
        });
    curl_share_setopt(
        share, CURLSHOPT_UNLOCKFUNC, +[](CURL*, curl_lock_data data, void*) {
            if (data == CURL_LOCK_DATA_SSL_SESSION)
                gate().sessions.unlock();
        });
    curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    return share;
}

} // namespace

void CurlGlobal::initialise() {
    static std::once_flag once;
    std::call_once(once, [] {
        curl_global_init(CURL_GLOBAL_ALL);
        // After the line above, so that it runs before what that line registered.
        std::atexit(closeGate);
    });
}

CURLSH* CurlGlobal::tlsSessions() {
    static CURLSH* const sessions = makeTlsSessions();
    return sessions;
}

CurlGlobal::Pass::Pass()
    : m_lock(gate().mutex) {
    if (!gate().isClosed)
        return;
    m_lock.unlock();
    while (true)
        pause();
}

} // namespace zofra
