// SPDX-License-Identifier: GPL-3.0-or-later
// Whole answers of HTTP servers, redirects included, through libcurl as the program uses it. Nothing is sent:
// every connection is a pair of sockets that already holds the answer. Answers stand between lines of "%%".
#include "fuzz/FuzzBytes.h"
#include "platform/linux/net/CurlGlobal.h"
#include "platform/linux/net/CurlTransfer.h"

#include <algorithm>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr std::size_t cap = 1000;

/// The servers: each connection gets the next answer, the last one from then on.
struct Servers {
    QList<QByteArray> answers;
    qsizetype asked = 0;

    curl_socket_t open() {
        int ends[2] = {-1, -1};
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
            return CURL_SOCKET_BAD;
        const auto& answer = answers[std::min(asked++, answers.size() - 1)];
        static_cast<void>(
            ::send(ends[1], answer.constData(), static_cast<std::size_t>(answer.size()), MSG_DONTWAIT));
        ::shutdown(ends[1], SHUT_WR);
        m_servers.push_back(ends[1]);
        return ends[0];
    }
    ~Servers() {
        for (const int server : m_servers)
            ::close(server);
    }

private:
    std::vector<int> m_servers;
};

zofra::HttpResult resultOf(const QByteArray& bytes, zofra::HttpRequest::Purpose purpose, qsizetype& asked) {
    Servers servers;
    qsizetype start = 0;
    while (start >= 0) {
        const auto end = bytes.indexOf("%%\n", start);
        servers.answers.push_back(bytes.mid(start, end < 0 ? -1 : end - start).left(100'000));
        start = end < 0 ? -1 : end + 3;
    }
    zofra::HttpRequest request;
    request.url = QUrl(QStringLiteral("http://127.0.0.1/x"));
    request.maxBodyBytes = cap;
    request.timeout = std::chrono::milliseconds(500);
    request.purpose = purpose;
    zofra::CurlTransfer transfer(request, {});
    auto& handle = transfer.handle();
    handle.set(CURLOPT_OPENSOCKETDATA, &servers);
    handle.set(
        CURLOPT_OPENSOCKETFUNCTION,
        +[](void* self, curlsocktype, curl_sockaddr*) { return static_cast<Servers*>(self)->open(); });
    handle.set(
        CURLOPT_SOCKOPTFUNCTION,
        +[](void*, curl_socket_t, curlsocktype) -> int { return CURL_SOCKOPT_ALREADY_CONNECTED; });
    // No name is looked up, whatever a redirect says, and nothing but plain connections can be answered here.
    static curl_slist* const nowhere = curl_slist_append(nullptr, "::127.0.0.1:80");
    handle.set(CURLOPT_CONNECT_TO, nowhere);
    handle.set(CURLOPT_REDIR_PROTOCOLS_STR, "http");
    const auto code = curl_easy_perform(handle.easy());
    asked = servers.asked;
    return transfer.result(code);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    CurlGlobal::initialise();
    const auto bytes = fuzz::bytes(data, size);
    for (const auto purpose : {HttpRequest::Purpose::question, HttpRequest::Purpose::order}) {
        qsizetype asked = 0;
        const auto result = resultOf(bytes, purpose, asked);
        const bool isOrder = purpose == HttpRequest::Purpose::order;
        // A dead connection is tried once more, so twice six at most.
        fuzz::require(asked <= (isOrder ? 2 : 12));
        if (!result) {
            fuzz::require(!result.error().localizedDescription.isEmpty() &&
                          !result.error().localizedDescription.contains(QLatin1Char('\n')));
            continue;
        }
        fuzz::require(result->status >= 100 && result->status <= 999);
        fuzz::require(static_cast<std::size_t>(result->body.size()) <= (isOrder ? 0 : cap));
    }
    return 0;
}
