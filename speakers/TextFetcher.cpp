// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/TextFetcher.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <iterator>
#include <mutex>

namespace zofra {

namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

struct Outcome {
    std::size_t index;
    std::optional<QString> text;
};

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
    std::vector<Outcome> take(const std::stop_token& end, SteadyTime deadline) {
        std::unique_lock lock(mutex);
        changed.wait_until(lock, end, deadline, [this] { return !outcomes.empty(); });
        return std::exchange(outcomes, {});
    }
};

/// The session ends a request at its timeout, and only then is there room for another: two clocks that differ
/// by a moment must not make more requests than there may be. Who waits for a session that never answers
/// waits so much longer.
constexpr std::chrono::milliseconds patience{500};

struct InFlight {
    std::size_t index;
    SteadyTime deadline;
};

std::optional<QString> textOf(const HttpResult& result) {
    return result && result->status == 200 ? std::optional(QString::fromUtf8(result->body)) : std::nullopt;
}

/// One batch of requests under way.
class Batch {
public:
    Batch(std::shared_ptr<SpeakerBackground> background, const std::vector<HttpRequest>& requests,
          TextFetcher::Denial denial)
        : m_background(std::move(background))
        , m_requests(requests)
        , m_denial(denial) {}

    void run(const TextFetcher::Received& received) {
        while (!m_background->ended()) {
            startMore();
            if (m_inFlight.empty())
                return;
            // What has come by now is among those taken, however long the reading of others took.
            const auto now = std::chrono::steady_clock::now();
            const auto arrived = m_arrivals->take(m_background->endToken(), nextDeadline());
            for (const auto& outcome : arrived) {
                const bool isAwaited = std::erase_if(m_inFlight, [&](const auto& entry) {
                                           return entry.index == outcome.index;
                                       }) > 0;
                if (isAwaited && outcome.text)
                    received(outcome.index, *outcome.text);
            }
            // The session ends a request at its timeout; this holds even if it did not.
            std::erase_if(m_inFlight, [now](const auto& entry) { return entry.deadline <= now; });
        }
    }

private:
    void startMore() {
        while (m_next < m_requests.size() &&
               std::ssize(m_inFlight) < SpeakerBackground::maxRequestsInFlight) {
            const auto& request = m_requests[m_next];
            m_inFlight.push_back({m_next, std::chrono::steady_clock::now() + request.timeout + patience});
            m_background->outside().session.start(request, completion(m_next));
            ++m_next;
        }
    }

    HttpSession::Completion completion(std::size_t index) const {
        return [weak = std::weak_ptr(m_background), denial = m_denial, arrivals = m_arrivals,
                url = m_requests[index].url, index](const HttpResult& result) {
            const auto background = weak.lock();
            if (!result && background && denial == TextFetcher::Denial::noted)
                background->noteIfDenied(result.error(), url);
            arrivals->add({index, textOf(result)});
        };
    }

    SteadyTime nextDeadline() const {
        return std::min_element(m_inFlight.begin(), m_inFlight.end(),
                                [](const auto& a, const auto& b) { return a.deadline < b.deadline; })
            ->deadline;
    }

    std::shared_ptr<SpeakerBackground> m_background;
    const std::vector<HttpRequest>& m_requests;
    const TextFetcher::Denial m_denial;
    std::size_t m_next = 0;
    std::vector<InFlight> m_inFlight;
    std::shared_ptr<Arrivals> m_arrivals = std::make_shared<Arrivals>();
};

} // namespace

std::optional<QString> TextFetcher::fetchText(HttpRequest request) const {
    std::optional<QString> result;
    fetchTexts({std::move(request)}, Denial::noted,
               [&result](std::size_t, const QString& text) { result = text; });
    return result;
}

void TextFetcher::fetchTexts(const std::vector<HttpRequest>& requests, Denial denial,
                             const Received& received) const {
    Batch(m_background, requests, denial).run(received);
}

} // namespace zofra
