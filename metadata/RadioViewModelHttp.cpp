// SPDX-License-Identifier: GPL-3.0-or-later
// The HTTP sources of the model: the on-air search service, and the scraper where that fails.
#include "metadata/RadioViewModel.h"
#include "metadata/ScraperPage.h"

#include <chrono>
#include <limits>
#include <utility>
#include <vector>

namespace zofra {

namespace {

using namespace std::chrono_literals;

constexpr auto requestTimeout = 6000ms;
constexpr auto retryDelay = 2000ms;

/// The body of a response with a status of success; null for everything else.
const QByteArray* successfulBody(const HttpResult& result) {
    return result && result->status >= 200 && result->status <= 299 ? &result->body : nullptr;
}

/// The items in the answer to a request for `rpId`; absent for every kind of failure.
std::optional<std::vector<OnAirItem>> itemsIn(const HttpResult& result, const QString& rpId) {
    const auto* body = successfulBody(result);
    return body == nullptr ? std::nullopt : onAirItems(*body, rpId);
}

double secondsSince1970(TimePoint time) {
    return std::chrono::duration<double>(time.time_since_epoch()).count();
}

} // namespace

void RadioViewModel::fetchMetadata() {
    const RadioStation station = currentStation;
    if (m_metadataRequestCounter == std::numeric_limits<std::uint64_t>::max())
        qFatal("No number is left for a further metadata request.");
    const auto requestId = ++m_metadataRequestCounter;
    if (const auto rpId = station.radioplayerId())
        fetchRadioplayerMetadata(*rpId, station, requestId, 0);
    else if (const auto url = scraperUrl(station))
        fetchScraperMetadata(*url, station, requestId);
}

void RadioViewModel::startRequest(const QUrl& url, HttpSession::Completion completion) {
    HttpRequest request;
    request.url = url;
    request.headers.emplace_back("User-Agent", "Mozilla/5.0");
    request.timeout = requestTimeout;
    request.cachePolicy = HttpRequest::CachePolicy::ignoreLocalAndRemote;
    m_session.start(std::move(request), std::move(completion));
}

void RadioViewModel::fetchRadioplayerMetadata(const QString& rpId, RadioStation station,
                                              std::uint64_t requestId, int attempt) {
    const auto url = serviceUrl(QStringLiteral("https"), m_environment.hosts.onAirHost(),
                                QStringLiteral("/056/qp/v3/onair?rpIds=") + rpId);
    if (!url)
        return;
    auto handle =
        onMainThread<OnAirItems>([this, rpId, station, requestId, attempt](const OnAirItems& items) {
            handleRadioplayerResponse(items, rpId, station, requestId, attempt);
        });
    // Read where it arrives: the longest answer would keep the main thread busy for several frames.
    startRequest(*url, [rpId, handle = std::move(handle)](const HttpResult& result) {
        handle(itemsIn(result, rpId));
    });
}

void RadioViewModel::handleRadioplayerResponse(const OnAirItems& items, const QString& rpId,
                                               RadioStation station, std::uint64_t requestId, int attempt) {
    if (!items) {
        handleRadioplayerFailure(rpId, station, requestId, attempt);
        return;
    }
    if (currentStation != station)
        return;
    const auto text = onAirText(*items, secondsSince1970(m_now()));
    if (hasFreshLiveTrack())
        return;
    if (text)
        applyUnlessStale(requestId, *text);
    else if (m_isLoading)
        applyUnlessStale(requestId, station.displayName());
}

void RadioViewModel::handleRadioplayerFailure(const QString& rpId, RadioStation station,
                                              std::uint64_t requestId, int attempt) {
    if (currentStation != station || isStale(requestId))
        return;
    if (const auto url = scraperUrl(station))
        fetchScraperMetadata(*url, station, requestId);
    if (attempt >= 1)
        return;
    m_environment.mainQueue.asyncAfter(
        retryDelay, m_lifetime.guard([this, rpId, station, requestId, attempt] {
            if (currentStation == station && !isStale(requestId))
                fetchRadioplayerMetadata(rpId, station, requestId, attempt + 1);
        }));
}

std::optional<QUrl> RadioViewModel::scraperUrl(RadioStation station) const {
    const auto path = station.scraperPath();
    if (!path)
        return std::nullopt;
    return serviceUrl(QStringLiteral("https"), m_environment.hosts.scraperHost(), *path);
}

void RadioViewModel::fetchScraperMetadata(const QUrl& url, RadioStation station, std::uint64_t requestId) {
    startRequest(url, onMainThread<HttpResult>([this, station, requestId](const HttpResult& result) {
                     handleScraperResponse(result, station, requestId);
                 }));
}

void RadioViewModel::handleScraperResponse(const HttpResult& result, RadioStation station,
                                           std::uint64_t requestId) {
    const auto* body = successfulBody(result);
    if (body == nullptr || currentStation != station)
        return;
    const auto page = ScraperPage::fromBody(*body);
    if (!page)
        return;
    auto text = page->text();
    if (!text && m_isLoading)
        text = station.displayName();
    if (!text || hasFreshLiveTrack())
        return;
    applyUnlessStale(requestId, *text);
}

void RadioViewModel::applyUnlessStale(std::uint64_t requestId, const QString& text) {
    if (isStale(requestId))
        return;
    m_lastAppliedMetadataRequest = requestId;
    applyMetadata(text);
}

void RadioViewModel::applyMetadata(const QString& text) {
    m_isLoading = false;
    // The HTTP sources know no next song; the one of the live feed stays as long as its current one does.
    if (text != currentSong.get())
        nextSong = std::nullopt;
    currentSong = text;
    tellUpdate(text, nextSong);
}

} // namespace zofra
