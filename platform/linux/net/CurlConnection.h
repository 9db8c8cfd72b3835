// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <curl/curl.h>
#include <optional>

namespace zofra {

/// A connection of its own within the loop of a CurlWorker, for a protocol that libcurl does not speak. All
/// of it is called on the worker's thread.
class CurlConnection {
public:
    virtual ~CurlConnection() = default;

    /// The handle, set up with CURLOPT_CONNECT_ONLY.
    [[nodiscard]] virtual CURL* easy() const = 0;
    /// The connection has been made, or has failed.
    virtual void connected(CURLcode code) = 0;

    /// What to wait for before the next step.
    struct Wait {
        /// Of the connection's descriptor, for poll; 0 for none.
        short events = 0;
        std::chrono::steady_clock::time_point until;
    };
    /// Reads and writes what is to be read and written now, never for long. Absent when the connection is to
    /// be closed.
    [[nodiscard]] virtual std::optional<Wait> step(std::chrono::steady_clock::time_point now) = 0;
    /// The handle has left the loop, and is to be freed.
    virtual void released() = 0;
};

} // namespace zofra
