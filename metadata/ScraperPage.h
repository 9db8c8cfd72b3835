// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/JsonText.h"
#include "metadata/LiveTrack.h"
#include "stations/RadioStation.h"
#include "stations/ServiceHosts.h"

#include <QByteArray>
#include <QRegularExpression>
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
    [[nodiscard]] static std::optional<ScraperPage> fromBody(const QByteArray& body) {
        // What follows each repetition in these expressions cannot be part of it, so that the engine never
        // goes back: the time they take grows with the length of the page and no faster, whatever the page
        // is.
        static const QRegularExpression title(uR"re("title"\s*:\s*"([^"]+)")re"_qs);
        static const QRegularExpression artist(uR"re("artist"\s*:\s*"([^"]+)")re"_qs);
        static const QRegularExpression track(uR"re("track"\s*:\s*"([^"]+)")re"_qs);
        const auto text = textFromUtf8(body);
        if (!text)
            return std::nullopt;
        const auto found = [&](const QRegularExpression& field) { return field.match(*text).captured(1); };
        return ScraperPage{found(title), found(artist), found(track)};
    }

    /// The title, else artist and track when both are there, else nothing.
    [[nodiscard]] std::optional<QString> text() const {
        if (!title.isEmpty())
            return title;
        if (!artist.isEmpty() && !track.isEmpty())
            return artist + nowPlayingSeparator() + track;
        return std::nullopt;
    }
};

/// Where the page of a station is; absent for one without a page.
[[nodiscard]] inline std::optional<QUrl> scraperUrl(const ServiceHosts& hosts, RadioStation station) {
    const auto path = station.scraperPath();
    return path ? serviceUrl(u"https"_qs, hosts.scraperHost(), *path) : std::nullopt;
}

} // namespace zofra
