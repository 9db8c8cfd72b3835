// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "platform/linux/net/CurlHandle.h"

#include <QByteArray>

#include <cstddef>
#include <memory>
#include <optional>
#include <stop_token>

namespace zofra {

/// One request as a libcurl handle: how it is sent, how much of the answer is read, what it came to. One
/// thread.
class CurlTransfer {
public:
    CurlTransfer(HttpRequest request, const TrustedAuthorities& authorities);

    /// Why the request cannot be sent at all, if so.
    [[nodiscard]] std::optional<HttpError> refusal() const { return m_refusal; }
    [[nodiscard]] const std::stop_token& stop() const { return m_request.stop; }
    [[nodiscard]] CURL* easy() const { return m_handle.easy(); }
    [[nodiscard]] CurlHandle& handle() { return m_handle; }
    [[nodiscard]] static HttpError cancelled() {
        return {HttpError::Code::cancelled, 0, u"The request has been cancelled."_qs};
    }
    /// What it came to, once libcurl is done with it.
    [[nodiscard]] HttpResult result(CURLcode code);

private:
    void setUpLimits();
    void setUpMethod();
    [[nodiscard]] bool setUpHeaders();
    void addHeader(const QByteArray& line);
    [[nodiscard]] bool hasHeader(QByteArrayView name) const;
    [[nodiscard]] bool isOrder() const { return m_request.purpose == HttpRequest::Purpose::order; }

    std::size_t receiveBody(const char* bytes, std::size_t size);

    [[nodiscard]] HttpError error(CURLcode code) const;
    [[nodiscard]] HttpError::Code errorCode(CURLcode code, int systemErrno) const;

    const HttpRequest m_request;
    std::optional<HttpError> m_refusal;
    std::unique_ptr<curl_slist, void (*)(curl_slist*)> m_headers{nullptr, curl().slistFreeAll};
    QByteArray m_body;
    std::size_t m_bodyBytes = 0;
    bool m_isTooLarge = false;
    // Last: closing it may still call back into what stands above.
    CurlHandle m_handle;
};

} // namespace zofra
