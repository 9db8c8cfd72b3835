// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SsdpAnswer.h"

#include "speakers/PlayerAddress.h"

#include <QHash>
#include <QList>
#include <QStringView>

namespace zofra {

namespace {

bool isNewline(QChar character) {
    const auto unit = character.unicode();
    return (unit >= 0x0A && unit <= 0x0D) || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
}

QList<QStringView> lines(QStringView text) {
    QList<QStringView> result;
    qsizetype start = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isNewline(text[i])) {
            result.append(text.sliced(start, i - start));
            start = i + 1;
        }
    }
    result.append(text.sliced(start));
    return result;
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
    if (all.first().trimmed() != QLatin1String("HTTP/1.1 200 OK"))
        return std::nullopt;
    QHash<QString, QString> headers;
    for (const auto& line : all.sliced(1)) {
        const auto colon = line.indexOf(u':');
        if (colon >= 0)
            headers.insert(headerName(line.first(colon)), line.sliced(colon + 1).trimmed().toString());
    }
    if (headers.value(QStringLiteral("ST")) != QLatin1String(deviceType))
        return std::nullopt;
    const auto location = headers.value(QStringLiteral("LOCATION"));
    return carriesUserInfo(location) ? std::nullopt : playerAddress(location);
}

} // namespace zofra
