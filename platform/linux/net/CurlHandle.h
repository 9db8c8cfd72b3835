// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "platform/linux/net/TrustedAuthorities.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

namespace zofra {

/// One libcurl handle under the rules of every connection of this program: HTTP 1.1 with or without TLS and
/// nothing else, at most five redirects and never out of TLS once in it, servers verified, TLS 1.2 or newer,
/// proxies as the environment sets them but none for local hosts, the heads of answers bounded. Who sends
/// what, and where the answer goes, is its owner's to set. One thread.
class CurlHandle {
public:
    CurlHandle(const QUrl& url, const TrustedAuthorities& authorities,
               HttpRequest::Route route = HttpRequest::Route::environment);
    CurlHandle(const CurlHandle&) = delete;
    CurlHandle& operator=(const CurlHandle&) = delete;

    /// Why nothing can be sent, if so: there was no memory, or the extra authority's file cannot be read.
    [[nodiscard]] const std::optional<QString>& refusal() const { return m_refusal; }
    /// Null only when refused.
    [[nodiscard]] CURL* easy() const { return m_easy.get(); }
    /// Frees the handle before this object ends. It belongs to no transfer any more.
    void close() { m_easy.reset(); }
    /// What the library knows under `which`, 0 when nothing.
    [[nodiscard]] long number(CURLINFO which) const;
    template<typename Value>
    void set(CURLoption option, Value value) {
        curl().easySetopt(m_easy.get(), option, value);
    }

    /// Uses no kept connection and no looked-up address from before `time`.
    void avoidOlderThan(std::chrono::steady_clock::time_point time);

    /// What kind of error `code` is, where nothing more is known.
    [[nodiscard]] static HttpError::Code meaningOf(CURLcode code);
    /// What `code` means here, as one line.
    [[nodiscard]] QString errorText(CURLcode code) const;
    /// Whether it ended because a redirect led from a secure address to an insecure one.
    [[nodiscard]] bool hasRefusedDowngrade() const { return m_isDowngrade; }
    /// Whether it ended because the heads of the answers were longer than allowed.
    [[nodiscard]] bool hasRefusedHead() const { return m_headBytes > maxHeadBytes; }
    /// Whether the head of the final answer is there.
    [[nodiscard]] bool hasHead() const { return m_hasHead; }
    /// The operating system's errno when `code` says that the connection failed, else 0.
    [[nodiscard]] int connectErrno(CURLcode code) const;

private:
    /// Of all responses to a request together, redirects included.
    static constexpr std::size_t maxHeadBytes = 131'072;

    void limitRedirects(bool startsSecure);
    void limitHeads();
    void verify(const TrustedAuthorities& authorities);
    int beforeRequest();
    std::size_t receiveHead(QByteArrayView line);
    curl_socket_t openSocket(const curl_sockaddr& address);

    std::optional<QString> m_refusal;
    /// The library uses the bytes without a copy of its own.
    std::optional<QByteArray> m_pem;
    std::array<char, CURL_ERROR_SIZE> m_errorText{};
    std::size_t m_headBytes = 0;
    int m_socketErrno = 0;
    bool m_hasHead = false;
    bool m_hasBeenSecure = false;
    bool m_isDowngrade = false;
    // Last: closing it may still call back into what stands above.
    std::unique_ptr<CURL, void (*)(CURL*)> m_easy{curl().easyInit(), curl().easyCleanup};
};

} // namespace zofra
