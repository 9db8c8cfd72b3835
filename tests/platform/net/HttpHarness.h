// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/net/CurlHttpSession.h"
#include "tests/platform/net/LoopbackServer.h"
#include "tests/support/PrintQt.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <ostream>

namespace zofra {

inline void PrintTo(HttpError::Code code, std::ostream* out) {
    constexpr std::array names{
        "notConnected", "timedOut",         "cannotFindHost", "cannotConnect",  "secureConnectionFailed",
        "tooLarge",     "tooManyRedirects", "unsupportedUrl", "connectionLost", "cancelled",
        "other"};
    *out << names.at(static_cast<std::size_t>(code));
}

} // namespace zofra

namespace zofra::test {

using namespace std::chrono_literals;

/// A request for `url` with a timeout that no test reaches by accident.
inline HttpRequest requestFor(const QString& url) {
    HttpRequest request;
    request.url = QUrl(url);
    request.timeout = 20s;
    return request;
}

/// A result that will come.
class Pending {
public:
    Pending(HttpSession& session, HttpRequest request) {
        auto promise = std::make_shared<std::promise<HttpResult>>();
        m_future = promise->get_future();
        session.start(std::move(request),
                      [promise](HttpResult result) { promise->set_value(std::move(result)); });
    }
    /// Gives up after half a minute.
    HttpResult get() {
        if (m_future.wait_for(30s) != std::future_status::ready)
            throw std::runtime_error("no completion");
        return m_future.get();
    }

private:
    std::future<HttpResult> m_future;
};

inline HttpResult fetch(HttpSession& session, HttpRequest request) {
    return Pending(session, std::move(request)).get();
}
inline HttpResult fetch(HttpSession& session, const QString& url) {
    return fetch(session, requestFor(url));
}

/// A whole response with a body of known length.
inline QByteArray response(int status, const QByteArray& body, const QByteArray& headers = {}) {
    return "HTTP/1.1 " + QByteArray::number(status) +
           " X\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body;
}

inline QByteArray redirect(const QString& location) {
    return response(302, {}, "Location: " + location.toUtf8() + "\r\n");
}

/// Serves every request of every connection with what `answer` gives for its head.
inline LoopbackServer::Handler serving(std::function<QByteArray(const QByteArray& head)> answer) {
    return [answer = std::move(answer)](ServerConnection& connection) {
        while (true) {
            const auto head = connection.readUntil("\r\n\r\n");
            if (!head.endsWith("\r\n\r\n") || !connection.write(answer(head)))
                return;
        }
    };
}

inline std::optional<HttpError::Code> codeOf(const HttpResult& result) {
    return result ? std::nullopt : std::optional(result.error().code);
}

} // namespace zofra::test
