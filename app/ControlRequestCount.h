// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"

#include <atomic>
#include <memory>

namespace zofra {

/// An HTTP session that knows how many requests which change something out there (POST) are still under way,
/// so that the program does not end before its speakers have heard "stop".
class ControlRequestCount final : public HttpSession {
public:
    /// `session` outlives it.
    explicit ControlRequestCount(HttpSession& session)
        : m_session(session) {}

    void start(HttpRequest request, Completion completion) override {
        if (request.method != "POST") {
            m_session.start(std::move(request), std::move(completion));
            return;
        }
        ++*m_underWay;
        m_session.start(std::move(request),
                        [underWay = m_underWay, completion = std::move(completion)](HttpResult result) {
                            // First, for it may start a further request.
                            if (completion)
                                completion(std::move(result));
                            --*underWay;
                        });
    }

    /// Callable from any thread.
    [[nodiscard]] int underWay() const { return *m_underWay; }

private:
    HttpSession& m_session;
    std::shared_ptr<std::atomic<int>> m_underWay = std::make_shared<std::atomic<int>>(0);
};

} // namespace zofra
