// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/HttpSession.h"

#include <QUrl>

#include <chrono>
#include <cstddef>

namespace zofra {

/// A device description is a few kilobytes; a longer answer than this is none.
inline constexpr std::size_t maxDescriptionBytes = 262'144;

/// A plain GET of a device description, past every proxy: players are neighbours.
[[nodiscard]] inline HttpRequest descriptionRequest(const QUrl& url, std::chrono::milliseconds timeout) {
    HttpRequest request;
    request.url = url;
    request.timeout = timeout;
    request.maxBodyBytes = maxDescriptionBytes;
    request.route = HttpRequest::Route::direct;
    return request;
}

} // namespace zofra
