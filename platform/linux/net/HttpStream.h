// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/net/TrustedAuthorities.h"

#include <QByteArray>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace zofra {

/// What this program calls itself before the servers of streams: its name and version.
[[nodiscard]] QByteArray userAgent();

/// A stream without an end over HTTP, under the rules of `CurlHandle`, for a reader who waits for each next
/// piece. What the reader does not take yet is left in the network, but for a bounded rest.
class HttpStream {
public:
    struct Settings {
        TrustedAuthorities authorities;
        QByteArray userAgent;
        /// How long nothing may come, connecting included.
        std::chrono::milliseconds patience{10'000};
    };

    /// `url` is encoded. Nothing is sent before the first `read`.
    HttpStream(const QByteArray& url, const Settings& settings);
    ~HttpStream();

    /// Waits for more, at most for the patience. Returns how many bytes came (at most `size`), 0 when the
    /// stream has ended in order, -1 when it could not be opened, broke or was cancelled. One thread at a
    /// time.
    [[nodiscard]] std::int64_t read(char* buffer, std::size_t size);
    /// A `read` that waits, and every later one, returns -1. Any thread.
    void cancel();

private:
    class Transfer;
    std::unique_ptr<Transfer> m_transfer;
};

} // namespace zofra
