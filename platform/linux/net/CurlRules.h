// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/net/TrustedAuthorities.h"

#include <QByteArray>
#include <QUrl>

#include <curl/curl.h>
#include <optional>

namespace zofra {

/// What holds for every request of this program, whoever sends it: HTTP 1.1 with or without TLS and nothing
/// else, at most five redirects and never out of TLS once in it, servers verified, TLS 1.2 or newer, proxies
/// as the environment sets them but none for local hosts. Belongs to one libcurl handle, outlives it, and is
/// used on its thread.
class CurlRules {
public:
    CurlRules() = default;
    CurlRules(const CurlRules&) = delete;
    CurlRules& operator=(const CurlRules&) = delete;

    /// Sets the handle up for requests to `url`. Once.
    void apply(CURL* easy, const QUrl& url, const TrustedAuthorities& authorities);

    /// Whether the request ended because a redirect led from a secure address to an insecure one.
    [[nodiscard]] bool hasRefusedDowngrade() const { return m_isDowngrade; }

private:
    void limitRedirects(bool startsSecure);
    void verify(const TrustedAuthorities& authorities);
    int beforeRequest();

    CURL* m_easy = nullptr;
    /// The handle uses the bytes without a copy of its own.
    std::optional<QByteArray> m_pem;
    bool m_hasBeenSecure = false;
    bool m_isDowngrade = false;
};

} // namespace zofra
