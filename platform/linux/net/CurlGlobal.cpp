// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/CurlGlobal.h"

#include <cstdlib>
#include <curl/curl.h>
#include <mutex>
#include <unistd.h>

namespace zofra {

namespace {

struct Gate {
    std::shared_mutex mutex;
    bool isClosed = false;
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

} // namespace

void CurlGlobal::initialise() {
    static std::once_flag once;
    std::call_once(once, [] {
        curl_global_init(CURL_GLOBAL_ALL);
        // After the line above, so that it runs before what that line registered.
        std::atexit(closeGate);
    });
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
