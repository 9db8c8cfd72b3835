// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/RadioStation.h"
#include "stations/ServiceHosts.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

namespace zofra {

/// What a page of the now-playing scraper says. A plain value, usable from any thread. The texts stand as
/// they were found: JSON escapes in them are not decoded.
struct ScraperPage {
    /// Each empty when it was not found.
    QString title;
    QString artist;
    QString track;

    /// Absent when the body is not UTF-8.
    [[nodiscard]] static std::optional<ScraperPage> fromBody(const QByteArray& body);

    /// The title, else artist and track when both are there, else nothing.
    [[nodiscard]] std::optional<QString> text() const;
};

/// Where the page of a station is; absent for one without a page.
[[nodiscard]] std::optional<QUrl> scraperUrl(const ServiceHosts& hosts, RadioStation station);

} // namespace zofra
