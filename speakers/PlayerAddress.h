// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QUrl>

#include <algorithm>
#include <optional>

namespace zofra {

/// The address that `text` spells, if well-formed, with a host, and exactly "http" or "https" in lower case.
[[nodiscard]] inline std::optional<QUrl> playerAddress(const QString& text) {
    // QUrl lowers the scheme's case, so the text itself is looked at.
    if (!text.startsWith(u"http:") && !text.startsWith(u"https:"))
        return std::nullopt;
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

/// Whether the address that `text` spells has room for a user name or password, be it empty.
[[nodiscard]] inline bool carriesUserInfo(const QString& text) {
    const auto start = text.indexOf(u"//");
    if (start < 0)
        return false;
    constexpr QStringView delimiters = u"/?#";
    const auto host = text.begin() + start + 2;
    const auto end = std::find_first_of(host, text.end(), delimiters.begin(), delimiters.end());
    return std::find(host, end, u'@') != end;
}

/// The usual address of a player's description.
[[nodiscard]] inline QUrl usualDescriptionAddress(const QString& host) {
    constexpr int playerPort = 1400;
    QUrl url;
    url.setScheme(u"http"_qs);
    url.setHost(host);
    url.setPort(playerPort);
    url.setPath(u"/xml/device_description.xml"_qs);
    return url;
}

} // namespace zofra
