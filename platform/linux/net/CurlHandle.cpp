// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/CurlHandle.h"

#include "platform/ForeignText.h"
#include "platform/linux/net/CurlGlobal.h"
#include "platform/linux/net/LocalHost.h"

#include <QLatin1String>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <sys/socket.h>
#include <utility>

namespace zofra {

namespace {

using Code = HttpError::Code;

constexpr std::pair<CURLcode, Code> meanings[] = {
    {CURLE_OPERATION_TIMEDOUT, Code::timedOut},
    {CURLE_COULDNT_RESOLVE_HOST, Code::cannotFindHost},
    {CURLE_COULDNT_RESOLVE_PROXY, Code::cannotFindHost},
    {CURLE_COULDNT_CONNECT, Code::cannotConnect},
    {CURLE_FILESIZE_EXCEEDED, Code::tooLarge},
    {CURLE_TOO_MANY_REDIRECTS, Code::tooManyRedirects},
    {CURLE_URL_MALFORMAT, Code::unsupportedUrl},
    {CURLE_SSL_CONNECT_ERROR, Code::secureConnectionFailed},
    {CURLE_PEER_FAILED_VERIFICATION, Code::secureConnectionFailed},
    {CURLE_SSL_CERTPROBLEM, Code::secureConnectionFailed},
    {CURLE_SSL_CIPHER, Code::secureConnectionFailed},
    {CURLE_SSL_CACERT_BADFILE, Code::secureConnectionFailed},
    {CURLE_SSL_ISSUER_ERROR, Code::secureConnectionFailed},
    {CURLE_USE_SSL_FAILED, Code::secureConnectionFailed},
    {CURLE_SEND_ERROR, Code::connectionLost},
    {CURLE_RECV_ERROR, Code::connectionLost},
    {CURLE_GOT_NOTHING, Code::connectionLost},
    {CURLE_PARTIAL_FILE, Code::connectionLost},
    {CURLE_ABORTED_BY_CALLBACK, Code::cancelled},
};

constexpr long maxRedirects = 5;
/// How long libcurl by itself uses a connection that lies idle, and an address that was looked up.
constexpr long keptConnectionSeconds = 118;
constexpr long keptAddressSeconds = 60;

} // namespace

CurlHandle::CurlHandle(const QUrl& url, const TrustedAuthorities& authorities, HttpRequest::Route route) {
    const bool isSecure = url.scheme() == u"https";
    if (!m_easy)
        m_refusal = curl().problem.value_or(u"No request could be made."_qs);
    else if (isSecure)
        m_refusal = authorities.problem();
    if (m_refusal)
        return;
    set(CURLOPT_URL, url.toEncoded(QUrl::RemoveFragment).constData());
    set(CURLOPT_ERRORBUFFER, m_errorText.data());
    set(CURLOPT_NOSIGNAL, 1L);
    // A name that is still being looked up at the end is left to itself instead of being waited for.
    set(CURLOPT_QUICK_EXIT, 1L);
    // Header names keep their spelling only before HTTP/2.
    set(CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
    set(CURLOPT_HTTP09_ALLOWED, 0L);
    if (route == HttpRequest::Route::direct || isLocalHost(url.host()))
        set(CURLOPT_PROXY, "");
    set(
        CURLOPT_OPENSOCKETFUNCTION, +[](void* self, curlsocktype, curl_sockaddr* address) {
            return static_cast<CurlHandle*>(self)->openSocket(*address);
        });
    set(CURLOPT_OPENSOCKETDATA, this);
    limitRedirects(isSecure);
    limitHeads();
    verify(authorities);
}

void CurlHandle::limitRedirects(bool startsSecure) {
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, startsSecure ? "https" : "http,https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, maxRedirects);
    set(
        CURLOPT_PREREQFUNCTION,
        +[](void* self, char*, char*, int, int) { return static_cast<CurlHandle*>(self)->beforeRequest(); });
    set(CURLOPT_PREREQDATA, this);
}

void CurlHandle::limitHeads() {
    set(
        CURLOPT_HEADERFUNCTION, +[](const char* bytes, std::size_t, std::size_t size, void* self) {
            return static_cast<CurlHandle*>(self)->receiveHead(
                QByteArrayView(bytes, static_cast<qsizetype>(size)));
        });
    set(CURLOPT_HEADERDATA, this);
}

void CurlHandle::verify(const TrustedAuthorities& authorities) {
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
    set(CURLOPT_CAINFO, authorities.file ? authorities.file->constData() : nullptr);
    set(CURLOPT_CAPATH, authorities.directory ? authorities.directory->constData() : nullptr);
    set(CURLOPT_SHARE, CurlGlobal::tlsSessions());
    m_pem = authorities.pem;
    if (!m_pem)
        return;
    curl_blob blob{const_cast<char*>(m_pem->constData()), static_cast<std::size_t>(m_pem->size()),
                   CURL_BLOB_NOCOPY};
    set(CURLOPT_CAINFO_BLOB, &blob);
}

long CurlHandle::number(CURLINFO which) const {
    long number = 0;
    curl().easyGetinfo(easy(), which, &number);
    return number;
}

void CurlHandle::avoidOlderThan(std::chrono::steady_clock::time_point time) {
    // The library counts in whole seconds.
    const auto since = std::chrono::steady_clock::now() - time;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(since).count();
    if (seconds > keptConnectionSeconds)
        return;
    const long age = std::max(0L, static_cast<long>(seconds) - 1);
    set(CURLOPT_DNS_CACHE_TIMEOUT, std::min(age, keptAddressSeconds));
    if (age == 0)
        set(CURLOPT_FRESH_CONNECT, 1L);
    else
        set(CURLOPT_MAXAGE_CONN, age);
}

/// Each request of a chain of redirects comes by here, with its connection made and nothing sent.
int CurlHandle::beforeRequest() {
    const char* scheme = nullptr;
    curl().easyGetinfo(easy(), CURLINFO_SCHEME, &scheme);
    const bool isSecure = QByteArrayView(scheme).compare("https", Qt::CaseInsensitive) == 0;
    m_isDowngrade = m_hasBeenSecure && !isSecure;
    m_hasBeenSecure = isSecure;
    return m_isDowngrade ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
}

std::size_t CurlHandle::receiveHead(QByteArrayView line) {
    const auto size = static_cast<std::size_t>(line.size());
    m_headBytes += size;
    if (hasRefusedHead())
        return 0;
    if (line.startsWith("HTTP/")) {
        m_hasHead = false;
    } else if (line == "\r\n" || line == "\n") {
        // Interim answers have heads too, and none is counted for an answer of a proxy on the way.
        m_hasHead = m_hasHead || number(CURLINFO_RESPONSE_CODE) >= 200;
    }
    return size;
}

curl_socket_t CurlHandle::openSocket(const curl_sockaddr& address) {
    const int descriptor = socket(address.family, address.socktype | SOCK_CLOEXEC, address.protocol);
    // The library says nothing of why a socket could not even be made.
    m_socketErrno = descriptor < 0 ? errno : 0;
    return descriptor < 0 ? CURL_SOCKET_BAD : descriptor;
}

HttpError::Code CurlHandle::meaningOf(CURLcode code) {
    const auto* found = std::ranges::find(meanings, code, &std::pair<CURLcode, Code>::first);
    return found == std::end(meanings) ? Code::other : found->second;
}

QString CurlHandle::errorText(CURLcode code) const {
    if (m_refusal)
        return *m_refusal;
    if (m_isDowngrade)
        return u"A redirect leads from a secure address to an insecure one."_qs;
    return oneLine(
        QString::fromUtf8(m_errorText.front() != '\0' ? m_errorText.data() : curl().easyStrerror(code)));
}

int CurlHandle::connectErrno(CURLcode code) const {
    if (code != CURLE_COULDNT_CONNECT)
        return 0;
    const auto systemErrno = static_cast<int>(number(CURLINFO_OS_ERRNO));
    return systemErrno != 0 ? systemErrno : m_socketErrno;
}

} // namespace zofra
