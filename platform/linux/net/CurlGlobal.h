// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <curl/curl.h>
#include <shared_mutex>

namespace zofra {

/// What every libcurl thread of the process shares: the library's initialisation, the TLS sessions that can
/// be resumed, and a gate that closes when the process exits.
///
/// Sessions end in the background, so the process may exit while one is still tidying up. The TLS library
/// tears itself down at exit; whoever uses it later crashes. So a thread holds a pass while it calls into
/// libcurl, and the exit waits for passes (never longer than one non-blocking step) and gives out no more.
class CurlGlobal {
public:
    /// Initialises libcurl, once. Any thread.
    static void initialise();

    /// TLS sessions, for CURLOPT_SHARE: who connects again to the same server needs no second full handshake.
    /// Null when there is no memory for it. After `initialise`, any thread.
    [[nodiscard]] static CURLSH* tlsSessions();

    /// Permission to call into libcurl. Once the process exits it is never given again: the thread stops
    /// here.
    class Pass {
    public:
        Pass();
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

    private:
        std::shared_lock<std::shared_mutex> m_lock;
    };
};

} // namespace zofra
