// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SpeakerBackground.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace zofra {

/// Fetches texts, waiting for them. For background threads only, one at a time; the end of the manager ends
/// the wait. A text is the body of an answer of status 200, as UTF-8 with invalid bytes repaired.
class TextFetcher {
public:
    explicit TextFetcher(std::shared_ptr<SpeakerBackground> background)
        : m_background(std::move(background)) {}

    /// Whether a request that the system refused to let onto the local network is reported.
    enum class Denial { noted, ignored };

    /// Waits at most the request's own timeout. Notes a denial.
    [[nodiscard]] std::optional<QString> fetchText(HttpRequest request) const {
        std::optional<QString> result;
        fetchTexts({std::move(request)}, Denial::noted,
                   [&result](std::size_t, const QString& text) { result = text; });
        return result;
    }

    using Received = std::function<void(std::size_t index, const QString& text)>;
    /// Fetches all in their order, at most `SpeakerBackground::maxRequestsInFlight` at a time, each no longer
    /// than its timeout. Calls `received` on the caller's thread, as texts come: no more of them are in
    /// memory than may be in flight. What came in time counts, however long `received` takes with others.
    void fetchTexts(const std::vector<HttpRequest>& requests, Denial denial, const Received& received) const {
        const auto arrivals = std::make_shared<Arrivals>();
        std::map<std::size_t, Time> deadlines; // of those in flight
        std::size_t next = 0;
        while (!m_background->ended()) {
            for (; next < requests.size() && std::ssize(deadlines) < SpeakerBackground::maxRequestsInFlight;
                 ++next) {
                const auto& request = requests[next];
                deadlines[next] = std::chrono::steady_clock::now() + request.timeout + patience;
                m_background->outside().session.start(request,
                                                      completion(denial, arrivals, request.url, next));
            }
            if (deadlines.empty())
                return;
            // What has come by now is among those taken, however long the reading of others took.
            const auto now = std::chrono::steady_clock::now();
            const auto first =
                std::ranges::min_element(deadlines, {}, [](const auto& entry) { return entry.second; });
            for (const auto& [index, text] : arrivals->take(m_background->endToken(), first->second)) {
                if (deadlines.erase(index) > 0 && text)
                    received(index, *text);
            }
            // The session ends a request at its timeout; this holds even if it did not.
            std::erase_if(deadlines, [now](const auto& entry) { return entry.second <= now; });
        }
    }

private:
    using Time = std::chrono::steady_clock::time_point;
    using Outcome = std::pair<std::size_t, std::optional<QString>>;
    /// Only the session's own end of a request makes room for another, or two clocks that differ by a moment
    /// would make more than there may be. A session that never answers is waited for so much longer.
    static constexpr std::chrono::milliseconds patience{500};

    /// What the completions and the waiting thread share.
    struct Arrivals {
        std::mutex mutex;
        std::condition_variable_any changed;
        std::vector<Outcome> outcomes;

        void add(Outcome outcome) {
            {
                const std::scoped_lock lock(mutex);
                outcomes.push_back(std::move(outcome));
            }
            changed.notify_one();
        }
        /// Those that have come, as soon as there is one, or none at `deadline`.
        std::vector<Outcome> take(const std::stop_token& end, Time deadline) {
            std::unique_lock lock(mutex);
            changed.wait_until(lock, end, deadline, [this] { return !outcomes.empty(); });
            return std::exchange(outcomes, {});
        }
    };

    [[nodiscard]] HttpSession::Completion completion(Denial denial, std::shared_ptr<Arrivals> arrivals,
                                                     const QUrl& url, std::size_t index) const {
        return [weak = std::weak_ptr(m_background), denial, arrivals = std::move(arrivals), url,
                index](const HttpResult& result) {
            const auto alive = weak.lock();
            if (!result && alive && denial == Denial::noted)
                alive->noteIfDenied(result.error(), url);
            const bool isText = result && result->status == 200;
            arrivals->add({index, isText ? std::optional(QString::fromUtf8(result->body)) : std::nullopt});
        };
    }

    std::shared_ptr<SpeakerBackground> m_background;
};

} // namespace zofra
