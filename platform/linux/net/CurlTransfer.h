// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "platform/linux/net/CurlRules.h"
#include "platform/linux/net/TrustedAuthorities.h"

#include <QByteArray>

#include <array>
#include <cstddef>
#include <curl/curl.h>
#include <memory>
#include <optional>

namespace zofra {

/// One request as a libcurl handle: how it is sent, how much of the answer is read, what it came to. One
/// thread.
class CurlTransfer {
public:
    CurlTransfer(HttpRequest request, const TrustedAuthorities& authorities);
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    /// Why the request cannot be sent at all, if so.
    [[nodiscard]] std::optional<HttpError> refusal() const { return m_refusal; }
    [[nodiscard]] CURL* easy() const { return m_easy.get(); }
    /// What it came to, once libcurl is done with it.
    [[nodiscard]] HttpResult result(CURLcode code);

private:
    void setUpLimits();
    void setUpMethod();
    [[nodiscard]] bool setUpHeaders();
    void addHeader(const QByteArray& line);
    [[nodiscard]] bool hasHeader(QByteArrayView name) const;

    std::size_t receiveBody(const char* bytes, std::size_t size);
    std::size_t receiveHeader(std::size_t size);
    curl_socket_t openSocket(const curl_sockaddr& address);

    [[nodiscard]] HttpError error(CURLcode code) const;
    [[nodiscard]] HttpError::Code errorCode(CURLcode code, int systemErrno) const;
    [[nodiscard]] int connectErrno(CURLcode code) const;

    struct EasyCloser {
        void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
    };
    struct ListCloser {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    HttpRequest m_request;
    std::optional<HttpError> m_refusal;
    std::unique_ptr<curl_slist, ListCloser> m_headers;
    std::array<char, CURL_ERROR_SIZE> m_errorText{};
    QByteArray m_body;
    std::size_t m_headerBytes = 0;
    int m_socketErrno = 0;
    bool m_isTooLarge = false;
    CurlRules m_rules;
    // Last: closing it may still call back into what stands above.
    std::unique_ptr<CURL, EasyCloser> m_easy;
};

} // namespace zofra
