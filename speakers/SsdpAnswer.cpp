// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlayerAddress.h"

#include <QHash>
#include <QRegularExpression>
#include <QStringList>

namespace zofra {

namespace {

/// The lines of `text`, whichever of Unicode's line ends part them.
QStringList lines(const QString& text) {
    static const QRegularExpression lineEnd(u"[\\n-\\r\\x{85}\\x{2028}\\x{2029}]"_qs);
    return text.split(lineEnd);
}

QString headerName(QStringView text) {
    const auto isBlank = [](QChar character) { return character == u' ' || character == u'\t'; };
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text.toString().toUpper();
}

} // namespace

std::optional<QUrl> NetworkPlayerProtocol::ssdpLocation(const QString& datagram) {
    const auto all = lines(datagram);
    if (all.first().trimmed() != u"HTTP/1.1 200 OK")
        return std::nullopt;
    QHash<QString, QString> headers;
    for (const auto& line : all.sliced(1)) {
        const auto colon = line.indexOf(u':');
        if (colon >= 0)
            headers.insert(headerName(QStringView(line).first(colon)), line.sliced(colon + 1).trimmed());
    }
    if (headers.value(u"ST"_qs) != QLatin1String(deviceType))
        return std::nullopt;
    const auto location = headers.value(u"LOCATION"_qs);
    return carriesUserInfo(location) ? std::nullopt : playerAddress(location);
}

} // namespace zofra
