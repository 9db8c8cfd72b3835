// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/TextFetcher.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <iterator>
#include <map>
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

/// Only the session's own end of a request makes room for another, or two clocks that differ by a moment
/// would make more than there may be. A session that never answers is waited for so much longer.
constexpr std::chrono::milliseconds patience{500};

std::optional<QString> textOf(const HttpResult& result) {
    return result && result->status == 200 ? std::optional(QString::fromUtf8(result->body)) : std::nullopt;
}

HttpSession::Completion completion(const std::shared_ptr<SpeakerBackground>& background,
                                   TextFetcher::Denial denial, std::shared_ptr<Arrivals> arrivals,
                                   const QUrl& url, std::size_t index) {
    return [weak = std::weak_ptr(background), denial, arrivals = std::move(arrivals), url,
            index](const HttpResult& result) {
        const auto alive = weak.lock();
        if (!result && alive && denial == TextFetcher::Denial::noted)
            alive->noteIfDenied(result.error(), url);
        arrivals->add({index, textOf(result)});
    };
}

} // namespace

std::optional<QString> TextFetcher::fetchText(HttpRequest request) const {
    std::optional<QString> result;
    fetchTexts({std::move(request)}, Denial::noted,
               [&result](std::size_t, const QString& text) { result = text; });
    return result;
}

void TextFetcher::fetchTexts(const std::vector<HttpRequest>& requests, Denial denial,
                             const Received& received) const {
    const auto arrivals = std::make_shared<Arrivals>();
    std::map<std::size_t, SteadyTime> deadlines; // of those in flight
    std::size_t next = 0;
    while (!m_background->ended()) {
        for (; next < requests.size() && std::ssize(deadlines) < SpeakerBackground::maxRequestsInFlight;
             ++next) {
            const auto& request = requests[next];
            deadlines[next] = std::chrono::steady_clock::now() + request.timeout + patience;
            m_background->outside().session.start(
                request, completion(m_background, denial, arrivals, request.url, next));
        }
        if (deadlines.empty())
            return;
        // What has come by now is among those taken, however long the reading of others took.
        const auto now = std::chrono::steady_clock::now();
        const auto first =
            std::ranges::min_element(deadlines, {}, [](const auto& entry) { return entry.second; });
        for (const auto& outcome : arrivals->take(m_background->endToken(), first->second)) {
            if (deadlines.erase(outcome.index) > 0 && outcome.text)
                received(outcome.index, *outcome.text);
        }
        // The session ends a request at its timeout; this holds even if it did not.
        std::erase_if(deadlines, [now](const auto& entry) { return entry.second <= now; });
    }
}

} // namespace zofra
