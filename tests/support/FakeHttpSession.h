// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"

#include <deque>
#include <mutex>
#include <utility>
#include <vector>

namespace zofra::test {

/// Keeps every request until the test answers it.
class FakeHttpSession final : public HttpSession {
public:
    struct Exchange {
        HttpRequest request;
        Completion completion;
    };

    void start(HttpRequest request, Completion completion) override {
        Answer answer;
        {
            const std::scoped_lock lock(m_mutex);
            requests.push_back(request);
            if (onRequest)
                onRequest(request);
            if (!automatic) {
                open.push_back({std::move(request), std::move(completion)});
                return;
            }
            answer = automatic;
        }
        completion(answer(request));
    }

    /// Answers the oldest open request.
    void answer(int status, const QByteArray& body) { finish(HttpResponse{status, body}); }
    void fail(HttpError error) { finish(failure(std::move(error))); }
    void finish(HttpResult result) {
        auto exchange = std::move(open.front());
        open.pop_front();
        exchange.completion(std::move(result));
    }

    using Answer = std::function<HttpResult(const HttpRequest&)>;
    /// When set, answers in place, on the caller's thread.
    Answer automatic;
    /// Sees each request before it is answered.
    std::function<void(const HttpRequest&)> onRequest;
    std::vector<HttpRequest> requests;
    std::deque<Exchange> open;

private:
    std::mutex m_mutex;
};

} // namespace zofra::test
