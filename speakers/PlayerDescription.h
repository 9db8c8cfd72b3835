// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"
#include "speakers/SonosSpeaker.h"

namespace zofra {

/// A device description is a few kilobytes; a longer answer than this is none.
inline constexpr std::size_t maxDescriptionBytes = 262'144;

/// A plain GET of a device description, past every proxy: players are neighbours.
[[nodiscard]] inline HttpRequest descriptionRequest(const QUrl& url, std::chrono::milliseconds timeout) {
    return {.url = url,
            .timeout = timeout,
            .maxBodyBytes = maxDescriptionBytes,
            .route = HttpRequest::Route::direct};
}

namespace NetworkPlayerProtocol {

/// The player that a device description, fetched from `url`, describes: a visible coordinator of its own.
[[nodiscard]] std::optional<SonosSpeaker> speaker(const QString& description, const QUrl& url);

} // namespace NetworkPlayerProtocol

} // namespace zofra
