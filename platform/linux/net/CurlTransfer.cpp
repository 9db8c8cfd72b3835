// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/CurlTransfer.h"

#include <QLatin1String>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

namespace zofra {

namespace {

using Code = HttpError::Code;

bool isToken(QByteArrayView name) {
    return !name.isEmpty() && std::ranges::all_of(name, [](char c) {
        return c > ' ' && c < 0x7f && !QByteArrayView("()<>@,;:\\\"/[]?={}").contains(c);
    });
}

bool isFieldValue(QByteArrayView value) {
    return std::ranges::none_of(value, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

} // namespace

CurlTransfer::CurlTransfer(HttpRequest request, const TrustedAuthorities& authorities)
    : m_request(std::move(request))
    , m_handle(m_request.url, authorities, m_request.route) {
    const auto scheme = m_request.url.scheme();
    if (!m_request.url.isValid() || m_request.url.host().isEmpty() ||
        (scheme != u"http" && scheme != u"https"))
        m_refusal = {Code::unsupportedUrl, 0, u"The address is not one of the web."_qs};
    else if (const auto& refusal = m_handle.refusal())
        m_refusal = {easy() == nullptr ? Code::other : Code::secureConnectionFailed, 0, *refusal};
    else if (!isToken(m_request.method) || !setUpHeaders())
        m_refusal = {Code::other, 0, u"The request's method or a header is malformed."_qs};
    if (m_refusal)
        return;
    setUpMethod();
    setUpLimits();
}

void CurlTransfer::setUpLimits() {
    const auto timeout =
        std::clamp<std::int64_t>(m_request.timeout.count(), 1, std::numeric_limits<int>::max());
    m_handle.set(CURLOPT_TIMEOUT_MS, static_cast<long>(timeout));
    if (isOrder())
        m_handle.set(CURLOPT_FOLLOWLOCATION, 0L);

    const auto cap = std::min<std::size_t>(m_request.maxBodyBytes, std::numeric_limits<int>::max());
    if (cap > 0 && !isOrder()) // 0 means no limit there; a cap of 0 is kept by the reading side
        m_handle.set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(cap));
    m_handle.set(
        CURLOPT_WRITEFUNCTION, +[](const char* bytes, std::size_t, std::size_t size, void* self) {
            return static_cast<CurlTransfer*>(self)->receiveBody(bytes, size);
        });
    m_handle.set(CURLOPT_WRITEDATA, this);
}

void CurlTransfer::setUpMethod() {
    const bool isPost = m_request.method == "POST";
    if (isPost || !m_request.body.isEmpty()) {
        m_handle.set(CURLOPT_POST, 1L);
        m_handle.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_request.body.size()));
        m_handle.set(CURLOPT_POSTFIELDS, m_request.body.constData());
    }
    if (m_request.method == "HEAD")
        m_handle.set(CURLOPT_NOBODY, 1L);
    else if (!isPost && (m_request.method != "GET" || !m_request.body.isEmpty()))
        m_handle.set(CURLOPT_CUSTOMREQUEST, m_request.method.constData());
}

bool CurlTransfer::setUpHeaders() {
    for (const auto& [name, value] : m_request.headers) {
        if (!isToken(name) || !isFieldValue(value))
            return false;
        // libcurl takes "Name:" as an order to leave the header out and "Name;" as an empty value.
        addHeader(value.trimmed().isEmpty() ? name + ';' : name + ": " + value);
    }
    if (m_request.cachePolicy == HttpRequest::CachePolicy::ignoreLocalAndRemote) {
        if (!hasHeader("Cache-Control"))
            addHeader("Cache-Control: no-cache");
        if (!hasHeader("Pragma"))
            addHeader("Pragma: no-cache");
    }
    // What libcurl would add of its own accord.
    addHeader("Expect:");
    if (!hasHeader("Content-Type"))
        addHeader("Content-Type:");
    m_handle.set(CURLOPT_HTTPHEADER, m_headers.get());
    return true;
}

void CurlTransfer::addHeader(const QByteArray& line) {
    auto* const list = curl().slistAppend(m_headers.get(), line.constData());
    if (list == nullptr)
        return;
    static_cast<void>(m_headers.release());
    m_headers.reset(list);
}

bool CurlTransfer::hasHeader(QByteArrayView name) const {
    return std::ranges::any_of(m_request.headers, [name](const auto& header) {
        return header.first.compare(name, Qt::CaseInsensitive) == 0;
    });
}

std::size_t CurlTransfer::receiveBody(const char* bytes, std::size_t size) {
    if (size > m_request.maxBodyBytes || m_bodyBytes > m_request.maxBodyBytes - size) {
        m_isTooLarge = true;
        return CURL_WRITEFUNC_ERROR;
    }
    m_bodyBytes += size;
    if (!isOrder())
        m_body.append(bytes, static_cast<qsizetype>(size));
    return size;
}

HttpResult CurlTransfer::result(CURLcode code) {
    const bool isAnswered = code == CURLE_OK || (isOrder() && m_handle.hasHead());
    if (!isAnswered || m_request.stop.stop_requested())
        return failure(error(code));
    const auto status = static_cast<int>(m_handle.number(CURLINFO_RESPONSE_CODE));
    return HttpResponse{status, std::move(m_body)};
}

HttpError CurlTransfer::error(CURLcode code) const {
    if (m_request.stop.stop_requested())
        return cancelled();
    const int systemErrno = m_handle.connectErrno(code);
    const bool isTooLarge = m_isTooLarge || m_handle.hasRefusedHead();
    return {isTooLarge ? Code::tooLarge : errorCode(code, systemErrno), systemErrno,
            isTooLarge ? u"The answer is larger than allowed."_qs : m_handle.errorText(code)};
}

HttpError::Code CurlTransfer::errorCode(CURLcode code, int systemErrno) const {
    if (m_handle.hasRefusedDowngrade())
        return Code::unsupportedUrl;
    if (systemErrno == EPERM || systemErrno == EACCES || systemErrno == ENETUNREACH)
        return Code::notConnected;
    // Also what an answer that is no HTTP comes to; then there was no header.
    const auto status = m_handle.number(CURLINFO_RESPONSE_CODE);
    if (code == CURLE_UNSUPPORTED_PROTOCOL)
        return status >= 300 && status < 400 ? Code::unsupportedUrl : Code::other;
    return CurlHandle::meaningOf(code);
}

} // namespace zofra
