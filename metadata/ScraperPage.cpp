// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/ScraperPage.h"

#include "metadata/JsonText.h"
#include "metadata/LiveTrack.h"

#include <QRegularExpression>

namespace zofra {

namespace {

// What follows each repetition in these expressions cannot be part of it, so that the engine never goes back:
// the time they take grows with the length of the page and no faster, whatever the page is.
QString firstCapture(const QRegularExpression& expression, const QString& text) {
    return expression.match(text).captured(1);
}

} // namespace

std::optional<ScraperPage> ScraperPage::fromBody(const QByteArray& body) {
    static const QRegularExpression titleExpression(uR"re("title"\s*:\s*"([^"]+)")re"_qs);
    static const QRegularExpression artistExpression(uR"re("artist"\s*:\s*"([^"]+)")re"_qs);
    static const QRegularExpression trackExpression(uR"re("track"\s*:\s*"([^"]+)")re"_qs);
    const auto decoded = textFromUtf8(body);
    if (!decoded)
        return std::nullopt;
    return ScraperPage{firstCapture(titleExpression, *decoded), firstCapture(artistExpression, *decoded),
                       firstCapture(trackExpression, *decoded)};
}

std::optional<QString> ScraperPage::text() const {
    if (!title.isEmpty())
        return title;
    if (!artist.isEmpty() && !track.isEmpty())
        return artist + nowPlayingSeparator() + track;
    return std::nullopt;
}

std::optional<QUrl> scraperUrl(const ServiceHosts& hosts, RadioStation station) {
    const auto path = station.scraperPath();
    return path ? serviceUrl(u"https"_qs, hosts.scraperHost(), *path) : std::nullopt;
}

} // namespace zofra
