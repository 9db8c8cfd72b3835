// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/RadioStation.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace zofra {

// The now-playing scraper service. Pure functions, callable from any thread.

/// The path of the station's page; absent for a station without one.
[[nodiscard]] std::optional<QString> scraperPath(RadioStation station);

/// What a page says. The texts stand as they were found: JSON escapes in them are not decoded.
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

} // namespace zofra
