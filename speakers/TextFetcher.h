// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SpeakerBackground.h"

#include <cstddef>
#include <functional>
#include <memory>
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
    [[nodiscard]] std::optional<QString> fetchText(HttpRequest request) const;

    using Received = std::function<void(std::size_t index, const QString& text)>;
    /// Fetches all in their order, at most `SpeakerBackground::maxRequestsInFlight` at a time, each no longer
    /// than its timeout. Calls `received` on the caller's thread, as texts come: no more of them are in
    /// memory than may be in flight. What came in time counts, however long `received` takes with others.
    void fetchTexts(const std::vector<HttpRequest>& requests, Denial denial, const Received& received) const;

private:
    std::shared_ptr<SpeakerBackground> m_background;
};

} // namespace zofra
