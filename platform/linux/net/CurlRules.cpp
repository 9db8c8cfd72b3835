// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/CurlRules.h"

#include "platform/linux/net/LocalHost.h"

#include <QByteArrayView>
#include <QLatin1String>

#include <cstddef>

namespace zofra {

namespace {

constexpr long maxRedirects = 5;

} // namespace

void CurlRules::apply(CURL* easy, const QUrl& url, const TrustedAuthorities& authorities) {
    m_easy = easy;
    curl_easy_setopt(m_easy, CURLOPT_NOSIGNAL, 1L);
    // A name that is still being looked up when the request ends is left to itself instead of being waited
    // for.
    curl_easy_setopt(m_easy, CURLOPT_QUICK_EXIT, 1L);
    // Header names keep their spelling only before HTTP/2.
    curl_easy_setopt(m_easy, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
    curl_easy_setopt(m_easy, CURLOPT_HTTP09_ALLOWED, 0L);
    if (isLocalHost(url.host()))
        curl_easy_setopt(m_easy, CURLOPT_PROXY, "");
    limitRedirects(url.scheme() == QLatin1String("https"));
    verify(authorities);
}

void CurlRules::limitRedirects(bool startsSecure) {
    curl_easy_setopt(m_easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(m_easy, CURLOPT_REDIR_PROTOCOLS_STR, startsSecure ? "https" : "http,https");
    curl_easy_setopt(m_easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(m_easy, CURLOPT_MAXREDIRS, maxRedirects);
    curl_easy_setopt(
        m_easy, CURLOPT_PREREQFUNCTION,
        +[](void* self, char*, char*, int, int) { return static_cast<CurlRules*>(self)->beforeRequest(); });
    curl_easy_setopt(m_easy, CURLOPT_PREREQDATA, this);
}

void CurlRules::verify(const TrustedAuthorities& authorities) {
    curl_easy_setopt(m_easy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(m_easy, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(m_easy, CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
    curl_easy_setopt(m_easy, CURLOPT_CAINFO, authorities.file ? authorities.file->constData() : nullptr);
    curl_easy_setopt(m_easy, CURLOPT_CAPATH,
                     authorities.directory ? authorities.directory->constData() : nullptr);
    m_pem = authorities.pem;
    if (!m_pem)
        return;
    curl_blob blob{const_cast<char*>(m_pem->constData()), static_cast<std::size_t>(m_pem->size()),
                   CURL_BLOB_NOCOPY};
    curl_easy_setopt(m_easy, CURLOPT_CAINFO_BLOB, &blob);
}

/// Each request of a chain of redirects comes by here, with its connection made and nothing sent.
int CurlRules::beforeRequest() {
    const char* scheme = nullptr;
    curl_easy_getinfo(m_easy, CURLINFO_SCHEME, &scheme);
    const bool isSecure = QByteArrayView(scheme).compare("https", Qt::CaseInsensitive) == 0;
    m_isDowngrade = m_hasBeenSecure && !isSecure;
    m_hasBeenSecure = isSecure;
    return m_isDowngrade ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
}

} // namespace zofra
