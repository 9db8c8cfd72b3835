// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "platform/linux/net/CurlGlobal.h"
#include "platform/linux/net/CurlHandle.h"

#include <QTemporaryFile>

#include <sys/socket.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    CurlGlobal::initialise();
    const auto bytes = fuzz::bytes(data, size);
    QTemporaryFile file;
    fuzz::require(file.open() && file.write(bytes) == bytes.size() && file.flush());

    const auto authorities = TrustedAuthorities::find(file.fileName());
    const auto problem = authorities.problem();
    fuzz::require(problem.has_value() != bytes.contains("-----BEGIN "));
    // What cannot be read is said before anything is sent; the rest the TLS library reads, and refuses or
    // takes.
    CurlHandle handle(QUrl(QStringLiteral("https://127.0.0.1/")), authorities);
    fuzz::require(handle.refusal() == problem);
    if (problem)
        return 0;
    handle.set(
        CURLOPT_OPENSOCKETFUNCTION, +[](void*, curlsocktype, curl_sockaddr*) -> curl_socket_t {
            int ends[2] = {-1, -1};
            fuzz::require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
            ::close(ends[1]); // The peer hangs up; by then the file has been read.
            return ends[0];
        });
    handle.set(
        CURLOPT_SOCKOPTFUNCTION,
        +[](void*, curl_socket_t, curlsocktype) -> int { return CURL_SOCKOPT_ALREADY_CONNECTED; });
    const auto code = curl_easy_perform(handle.easy());
    fuzz::require(code != CURLE_OK && !handle.errorText(code).isEmpty());
    return 0;
}
