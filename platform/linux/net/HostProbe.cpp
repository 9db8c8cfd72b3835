// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/HostProbe.h"

#include "platform/ForeignText.h"
#include "platform/linux/net/CurlGlobal.h"
#include "platform/linux/net/CurlRules.h"
#include "platform/linux/net/TrustedAuthorities.h"

#include <array>
#include <curl/curl.h>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace zofra {

namespace {

using Handle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;

constexpr std::chrono::milliseconds shortestNamePatience{3500};

struct Body {
    QByteArray bytes;
    std::size_t enough = 0;
};

std::size_t receive(const char* bytes, std::size_t, std::size_t size, void* self) {
    auto& body = *static_cast<Body*>(self);
    const auto room = body.enough - static_cast<std::size_t>(body.bytes.size());
    body.bytes.append(bytes, static_cast<qsizetype>(std::min(room, size)));
    return static_cast<std::size_t>(body.bytes.size()) < body.enough ? size : CURL_WRITEFUNC_ERROR;
}

/// The library does not say whether a connection was made when what followed it failed; its socket does.
int closeSocket(void* wasConnected, curl_socket_t descriptor) {
    sockaddr_storage peer{};
    socklen_t length = sizeof(peer);
    if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) == 0)
        *static_cast<bool*>(wasConnected) = true;
    return ::close(descriptor);
}

void setUp(CURL* easy, const HostProbe::Request& request) {
    curl_easy_setopt(easy, CURLOPT_URL, request.url.toEncoded(QUrl::RemoveFragment).constData());
    curl_easy_setopt(easy, CURLOPT_USERAGENT, request.userAgent.constData());
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(request.timeout.count()));
}

std::chrono::milliseconds timeOf(CURL* easy, CURLINFO which) {
    curl_off_t microseconds = 0;
    curl_easy_getinfo(easy, which, &microseconds);
    return std::chrono::milliseconds((microseconds + 999) / 1000);
}

QString textOf(CURL* easy, CURLINFO which) {
    const char* text = nullptr;
    curl_easy_getinfo(easy, which, &text);
    return QString::fromUtf8(text);
}

/// Where it failed: what the library says, else the first step that was not finished.
HostProbe::Step failedStep(CURLcode code, const HostProbe& probe, bool isSecure, bool wasConnected) {
    using Step = HostProbe::Step;
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return Step::name;
    case CURLE_COULDNT_CONNECT:
        return Step::connect;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
        return Step::tls;
    default:
        break;
    }
    if (probe.nameTime.count() == 0)
        return Step::name;
    if (!wasConnected && probe.connectTime.count() == 0)
        return Step::connect;
    return isSecure && probe.tlsTime.count() == 0 ? Step::tls : Step::answer;
}

void readProgress(CURL* easy, HostProbe& probe) {
    probe.nameTime = timeOf(easy, CURLINFO_NAMELOOKUP_TIME_T);
    probe.connectTime = timeOf(easy, CURLINFO_CONNECT_TIME_T);
    probe.tlsTime = timeOf(easy, CURLINFO_APPCONNECT_TIME_T);
    probe.answerTime = timeOf(easy, CURLINFO_STARTTRANSFER_TIME_T);
    probe.address = textOf(easy, CURLINFO_PRIMARY_IP);
    probe.contentType = oneLine(textOf(easy, CURLINFO_CONTENT_TYPE));
    long number = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &number);
    probe.status = static_cast<int>(number);
    number = 0;
    curl_easy_getinfo(easy, CURLINFO_OS_ERRNO, &number);
    probe.systemErrno = static_cast<int>(number);
}

} // namespace

HostProbe HostProbe::run(const Request& request, const std::optional<QString>& extraAuthorityFile) {
    CurlGlobal::initialise();
    HostProbe probe;
    // The handle may use them until its end.
    bool wasConnected = false;
    std::array<char, CURL_ERROR_SIZE> errorText{};
    Body body{{}, request.enoughBodyBytes};
    CurlRules rules;
    const Handle easy(curl_easy_init(), &curl_easy_cleanup);
    if (!easy) {
        probe.failedAt = Step::name;
        probe.reason = QStringLiteral("no request could be made");
        return probe;
    }
    const char* libraryBundle = nullptr;
    curl_easy_getinfo(easy.get(), CURLINFO_CAINFO, &libraryBundle);
    const auto authorities = TrustedAuthorities::find(extraAuthorityFile, QByteArray(libraryBundle));
    setUp(easy.get(), request);
    rules.apply(easy.get(), request.url, authorities);
    curl_easy_setopt(easy.get(), CURLOPT_ERRORBUFFER, errorText.data());
    curl_easy_setopt(easy.get(), CURLOPT_WRITEFUNCTION, &receive);
    curl_easy_setopt(easy.get(), CURLOPT_WRITEDATA, &body);
    curl_easy_setopt(easy.get(), CURLOPT_CLOSESOCKETFUNCTION, &closeSocket);
    curl_easy_setopt(easy.get(), CURLOPT_CLOSESOCKETDATA, &wasConnected);

    const CURLcode code = curl_easy_perform(easy.get());
    readProgress(easy.get(), probe);
    probe.body = body.bytes;
    const bool isEnough = static_cast<std::size_t>(body.bytes.size()) >= body.enough;
    if (code == CURLE_OK || isEnough)
        return probe;
    probe.failedAt = failedStep(code, probe, request.url.scheme() == QLatin1String("https"), wasConnected);
    // A name server that says no says it at once; the system's own patience with one that says nothing may be
    // shorter than ours.
    const bool nobodyKnew =
        probe.failedAt == Step::name && timeOf(easy.get(), CURLINFO_TOTAL_TIME_T) > shortestNamePatience;
    probe.timedOut = code == CURLE_OPERATION_TIMEDOUT || nobodyKnew;
    probe.reason = rules.hasRefusedDowngrade()
                       ? QStringLiteral("a redirect leads from a secure address to an insecure one")
                       : oneLine(QString::fromUtf8(errorText.front() != '\0' ? errorText.data()
                                                                             : curl_easy_strerror(code)));
    return probe;
}

} // namespace zofra
