// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/net/CurlLibrary.h"

#include <cstdlib>
#include <mutex>
#include <shared_mutex>
#include <unistd.h>

namespace zofra {

/// What every libcurl thread of the process shares: the library's initialisation, the TLS sessions that can
/// be resumed, and a gate that closes when the process exits.
///
/// Sessions end in the background, so the process may exit while one is still tidying up. The TLS library
/// tears itself down at exit; whoever uses it later crashes. So a thread holds a pass while it calls into
/// libcurl, and the exit waits for passes (never longer than one non-blocking step) and gives out no more.
class CurlGlobal {
public:
    /// Loads and initialises libcurl, once. Any thread but the main one.
    static void initialise() {
        static std::once_flag once;
        std::call_once(once, [] {
            if (curl().problem)
                return;
            curl().globalInit(CURL_GLOBAL_ALL);
            // After the line above, so that it runs before what that line registered.
            std::atexit([] {
                const std::unique_lock lock(gate().mutex);
                gate().isClosed = true;
            });
        });
    }

    /// TLS sessions, for CURLOPT_SHARE: who connects again to the same server needs no second full handshake.
    /// Null when there is no memory for it. After `initialise`, any thread.
    [[nodiscard]] static CURLSH* tlsSessions() {
        static CURLSH* const sessions = makeTlsSessions();
        return sessions;
    }

    /// Permission to call into libcurl. Once the process exits it is never given again: the thread stops
    /// here.
    class Pass {
    public:
        Pass()
            : m_lock(gate().mutex) {
            if (!gate().isClosed)
                return;
            m_lock.unlock();
            while (true)
                ::pause();
        }
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

    private:
        std::shared_lock<std::shared_mutex> m_lock;
    };

private:
    struct Gate {
        std::shared_mutex mutex;
        bool isClosed = false;
        /// One lock does for all sessions.
        std::mutex sessions;
    };
    /// Never destroyed: threads may come to it until the very end.
    static Gate& gate() {
        static auto* const instance = new Gate;
        return *instance;
    }

    static CURLSH* makeTlsSessions() {
        CURLSH* share = curl().shareInit();
        if (share == nullptr)
            return nullptr;
        curl().shareSetopt(
            share, CURLSHOPT_LOCKFUNC, +[](CURL*, curl_lock_data data, curl_lock_access, void*) {
                if (data == CURL_LOCK_DATA_SSL_SESSION)
                    gate().sessions.lock();
            });
        curl().shareSetopt(
            share, CURLSHOPT_UNLOCKFUNC, +[](CURL*, curl_lock_data data, void*) {
                if (data == CURL_LOCK_DATA_SSL_SESSION)
                    gate().sessions.unlock();
            });
        curl().shareSetopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
        return share;
    }
};

} // namespace zofra
