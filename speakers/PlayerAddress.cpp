// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlayerAddress.h"

#include <algorithm>

namespace zofra {

namespace {

constexpr int playerPort = 1400;

} // namespace

std::optional<QUrl> playerAddress(const QString& text) {
    // QUrl lowers the scheme's case, so the text itself is looked at.
    if (!text.startsWith(u"http:") && !text.startsWith(u"https:"))
        return std::nullopt;
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

bool carriesUserInfo(const QString& text) {
    const auto start = text.indexOf(u"//");
    if (start < 0)
        return false;
    constexpr QStringView delimiters = u"/?#";
    const auto host = text.begin() + start + 2;
    const auto end = std::find_first_of(host, text.end(), delimiters.begin(), delimiters.end());
    return std::find(host, end, u'@') != end;
}

QUrl usualDescriptionAddress(const QString& host) {
    QUrl url;
    url.setScheme(u"http"_qs);
    url.setHost(host);
    url.setPort(playerPort);
    url.setPath(u"/xml/device_description.xml"_qs);
    return url;
}

} // namespace zofra
