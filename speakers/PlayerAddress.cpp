// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlayerAddress.h"

namespace zofra {

namespace {

constexpr int playerPort = 1400;

} // namespace

std::optional<QUrl> playerAddress(const QString& text) {
    // QUrl lowers the scheme's case, so the text itself is looked at.
    if (!text.startsWith(QLatin1String("http:")) && !text.startsWith(QLatin1String("https:")))
        return std::nullopt;
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

bool carriesUserInfo(const QString& text) {
    const auto start = text.indexOf(QLatin1String("//"));
    if (start < 0)
        return false;
    for (auto i = start + 2; i < text.size(); ++i) {
        const auto character = text[i];
        if (character == u'@')
            return true;
        if (character == u'/' || character == u'?' || character == u'#')
            return false;
    }
    return false;
}

QUrl usualDescriptionAddress(const QString& host) {
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(host);
    url.setPort(playerPort);
    url.setPath(QStringLiteral("/xml/device_description.xml"));
    return url;
}

} // namespace zofra
