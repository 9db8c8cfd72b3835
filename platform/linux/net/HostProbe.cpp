// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/HostProbe.h"

#include "platform/ForeignText.h"
#include "platform/linux/net/CurlHandle.h"

#include <algorithm>
#include <sys/socket.h>
#include <unistd.h>

namespace zofra {

namespace {

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

std::chrono::milliseconds timeOf(CURL* easy, CURLINFO which) {
    curl_off_t microseconds = 0;
    curl().easyGetinfo(easy, which, &microseconds);
    return std::chrono::milliseconds((microseconds + 999) / 1000);
}

QString textOf(CURL* easy, CURLINFO which) {
    const char* text = nullptr;
    curl().easyGetinfo(easy, which, &text);
    return QString::fromUtf8(text);
}

/// Where it failed: what the library says, else the first step that was not finished.
HostProbe::Step failedStep(CURLcode code, const HostProbe& probe, bool isSecure, bool wasConnected) {
    using Step = HostProbe::Step;
    switch (CurlHandle::meaningOf(code)) {
    case HttpError::Code::cannotFindHost:
        return Step::name;
    case HttpError::Code::cannotConnect:
        return Step::connect;
    case HttpError::Code::secureConnectionFailed:
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

void readProgress(const CurlHandle& handle, HostProbe& probe) {
    auto* const easy = handle.easy();
    probe.nameTime = timeOf(easy, CURLINFO_NAMELOOKUP_TIME_T);
    probe.connectTime = timeOf(easy, CURLINFO_CONNECT_TIME_T);
    probe.tlsTime = timeOf(easy, CURLINFO_APPCONNECT_TIME_T);
    probe.answerTime = timeOf(easy, CURLINFO_STARTTRANSFER_TIME_T);
    probe.address = textOf(easy, CURLINFO_PRIMARY_IP);
    probe.contentType = oneLine(textOf(easy, CURLINFO_CONTENT_TYPE));
    probe.status = static_cast<int>(handle.number(CURLINFO_RESPONSE_CODE));
    probe.systemErrno = static_cast<int>(handle.number(CURLINFO_OS_ERRNO));
}

} // namespace

HostProbe HostProbe::run(const Request& request, const std::optional<QString>& extraAuthorityFile) {
    HostProbe probe;
    // The handle may use them until its end.
    bool wasConnected = false;
    Body body{{}, request.enoughBodyBytes};
    CurlHandle handle(request.url, TrustedAuthorities::find(extraAuthorityFile));
    if (const auto& refusal = handle.refusal()) {
        probe.failedAt = handle.easy() == nullptr ? Step::name : Step::tls;
        probe.reason = *refusal;
        return probe;
    }
    auto* const easy = handle.easy();
    handle.set(CURLOPT_USERAGENT, request.userAgent.constData());
    handle.set(CURLOPT_TIMEOUT_MS, static_cast<long>(request.timeout.count()));
    handle.set(CURLOPT_WRITEFUNCTION, &receive);
    handle.set(CURLOPT_WRITEDATA, &body);
    handle.set(CURLOPT_CLOSESOCKETFUNCTION, &closeSocket);
    handle.set(CURLOPT_CLOSESOCKETDATA, &wasConnected);

    const CURLcode code = curl().easyPerform(easy);
    readProgress(handle, probe);
    probe.body = body.bytes;
    const bool isEnough = static_cast<std::size_t>(body.bytes.size()) >= body.enough;
    if (code == CURLE_OK || isEnough)
        return probe;
    probe.failedAt = failedStep(code, probe, request.url.scheme() == u"https", wasConnected);
    // A name server that says no says it at once; the system's own patience with one that says nothing may be
    // shorter than ours.
    const bool nobodyKnew =
        probe.failedAt == Step::name && timeOf(easy, CURLINFO_TOTAL_TIME_T) > shortestNamePatience;
    probe.timedOut = code == CURLE_OPERATION_TIMEDOUT || nobodyKnew;
    probe.reason = handle.hasRefusedDowngrade()
                       ? u"a redirect leads from a secure address to an insecure one"_qs
                       : handle.errorText(code);
    return probe;
}

} // namespace zofra
