// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/TextFetcher.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <optional>

namespace zofra {

namespace {

using SteadyTime = std::chrono::steady_clock::time_point;

struct Outcome {
    std::size_t index;
    std::optional<QString> text;
};

/// What the completions and the waiting thread share; the list is guarded by the wait point.
struct Arrivals {
    explicit Arrivals(std::shared_ptr<WaitPoint> point)
        : waitPoint(std::move(point)) {}

    void add(Outcome outcome) {
        waitPoint->change([&] { finished.push_back(std::move(outcome)); });
    }

    std::shared_ptr<WaitPoint> waitPoint;
    std::vector<Outcome> finished;
};

struct InFlight {
    std::size_t index;
    SteadyTime deadline;
};

std::optional<QString> textOf(const HttpResult& result) {
    if (result.error || !result.response || result.response->status != 200)
        return std::nullopt;
    return QString::fromUtf8(result.response->body);
}

/// One batch of requests under way.
class Batch {
public:
    Batch(std::shared_ptr<SpeakerBackground> background, std::vector<HttpRequest> requests)
        : m_background(std::move(background))
        , m_requests(std::move(requests)) {}

    void run(const TextFetcher::Received& received) {
        while (true) {
            startMore();
            if (m_inFlight.empty())
                return;
            std::vector<Outcome> finished;
            const bool goesOn = m_background->waitPoint()->waitUntil(
                nextDeadline(), [this] { return !m_arrivals->finished.empty(); },
                [&] { std::swap(finished, m_arrivals->finished); });
            if (!goesOn)
                return;
            for (const auto& outcome : finished)
                take(outcome, received);
            giveUpOnLate();
        }
    }

private:
    void startMore() {
        while (m_next < m_requests.size() &&
               std::ssize(m_inFlight) < SpeakerBackground::maxRequestsInFlight) {
            auto& request = m_requests[m_next];
            m_inFlight.push_back({m_next, std::chrono::steady_clock::now() + request.timeout});
            m_background->start(std::move(request), completion(m_next));
            ++m_next;
        }
    }

    HttpSession::Completion completion(std::size_t index) const {
        return [weak = std::weak_ptr(m_background), arrivals = m_arrivals, index](const HttpResult& result) {
            const auto background = weak.lock();
            if (background && isLocalNetworkDenial(result.error))
                background->noteLocalNetworkDenial();
            arrivals->add({index, textOf(result)});
        };
    }

    SteadyTime nextDeadline() const {
        return std::min_element(m_inFlight.begin(), m_inFlight.end(),
                                [](const auto& a, const auto& b) { return a.deadline < b.deadline; })
            ->deadline;
    }

    void take(const Outcome& outcome, const TextFetcher::Received& received) {
        const auto waiting = std::find_if(m_inFlight.begin(), m_inFlight.end(),
                                          [&](const auto& entry) { return entry.index == outcome.index; });
        if (waiting == m_inFlight.end())
            return; // Too late: given up on before.
        m_inFlight.erase(waiting);
        if (outcome.text)
            received(outcome.index, *outcome.text);
    }

    /// The session ends a request at its timeout; this holds even if it did not.
    void giveUpOnLate() {
        const auto now = std::chrono::steady_clock::now();
        std::erase_if(m_inFlight, [now](const auto& entry) { return entry.deadline <= now; });
    }

    std::shared_ptr<SpeakerBackground> m_background;
    std::vector<HttpRequest> m_requests;
    std::size_t m_next = 0;
    std::vector<InFlight> m_inFlight;
    std::shared_ptr<Arrivals> m_arrivals = std::make_shared<Arrivals>(m_background->waitPoint());
};

} // namespace

std::optional<QString> TextFetcher::fetchText(HttpRequest request) const {
    std::optional<QString> result;
    std::vector<HttpRequest> requests;
    requests.push_back(std::move(request));
    fetchTexts(std::move(requests), [&result](std::size_t, const QString& text) { result = text; });
    return result;
}

void TextFetcher::fetchTexts(std::vector<HttpRequest> requests, const Received& received) const {
    Batch(m_background, std::move(requests)).run(received);
}

} // namespace zofra
