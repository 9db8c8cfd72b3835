// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <cstddef>
#include <functional>
#include <stop_token>
#include <utility>
#include <vector>

namespace zofra {

/// One HTTP request. Header names go out spelt as given.
struct HttpRequest {
    enum class CachePolicy { useProtocol, ignoreLocalAndRemote };
    /// What the request is for. A question follows redirects and wants a whole body. An order follows none,
    /// and its answer is the status alone: the body is thrown away, be it long, cut or late.
    enum class Purpose { question, order };
    /// `direct` never goes through a proxy, whatever the environment says.
    enum class Route { environment, direct };

    QByteArray method = "GET";
    QUrl url{};
    std::vector<std::pair<QByteArray, QByteArray>> headers{};
    QByteArray body{};
    /// For the whole request, from start to last byte.
    std::chrono::milliseconds timeout{60000};
    CachePolicy cachePolicy = CachePolicy::useProtocol;
    /// A longer body ends the request with HttpError::Code::tooLarge as soon as it is noticed.
    std::size_t maxBodyBytes = 1'048'576;
    Purpose purpose = Purpose::question;
    Route route = Route::environment;
    /// A stop gives the request up, waiting or under way; it ends with HttpError::Code::cancelled.
    std::stop_token stop = {};
};

/// Why a request gave no response.
struct HttpError {
    enum class Code {
        /// The network refused the connection attempt itself (EPERM, EACCES or ENETUNREACH).
        notConnected,
        timedOut,
        cannotFindHost,
        cannotConnect,
        secureConnectionFailed,
        tooLarge,
        tooManyRedirects,
        unsupportedUrl,
        connectionLost,
        cancelled,
        other,
    };
    Code code = Code::other;
    /// The operating system's errno of a failed connect, 0 when there was none.
    int systemErrno = 0;
    /// One line for a log.
    QString localizedDescription;
};

struct HttpResponse {
    int status = 0;
    QByteArray body;
};

/// What a request came to.
using HttpResult = Result<HttpResponse, HttpError>;

/// Sends HTTP requests. Questions follow 5 redirects at most, over http and https, never from https to http.
class HttpSession {
public:
    using Completion = std::function<void(HttpResult)>;
    virtual ~HttpSession() = default;

    /// Starts a request and returns at once. Callable from any thread. `completion` is called exactly once,
    /// on the session's own thread (on the main one where no thread is to be had), never in place, unless the
    /// session ends first; it must not block.
    virtual void start(HttpRequest request, Completion completion) = 0;
};

} // namespace zofra
