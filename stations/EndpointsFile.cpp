// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/EndpointsFile.h"

#include "platform/IniDocument.h"

#include <QRegularExpression>
#include <QUrl>

namespace zofra::endpoints {
namespace {

bool isDottedQuad(const QString& host) {
    static const QRegularExpression quad(
        uR"(\A(?:(?:25[0-5]|2[0-4]\d|1\d\d|[1-9]?\d)(?:\.(?!\z)|\z)){4}\z)"_qs);
    return quad.match(host).hasMatch();
}

std::optional<QString> mistakeInName(const QString& host) {
    static const QRegularExpression label(uR"(\A[A-Za-z0-9_](?:[A-Za-z0-9_-]{0,61}[A-Za-z0-9_])?\z)"_qs);
    static const QRegularExpression digitsAndDots(uR"(\A[\d.]+\z)"_qs);
    if (digitsAndDots.match(host).hasMatch())
        return isDottedQuad(host) ? std::nullopt : std::optional(u"is no IPv4 address"_qs);
    if (host.size() > 253)
        return u"is longer than a host name can be"_qs;
    for (const auto& part : host.split(u'.')) {
        if (!label.match(part).hasMatch())
            return u"is no host name"_qs;
    }
    return std::nullopt;
}

} // namespace

Result<std::vector<Entry>, Mistake> parse(const QByteArray& bytes) {
    const auto mistake = [](int line, const QString& key, const QString& value, const char* reason) {
        return failure(Mistake{line, key, value, QString::fromLatin1(reason)});
    };
    if (bytes.size() > maxFileBytes)
        return mistake(0, {}, {}, "is larger than 64 KiB");
    if (bytes.contains('\0'))
        return mistake(0, {}, {}, "is no text file");
    if (!bytes.isValidUtf8())
        return mistake(0, {}, {}, "is not UTF-8 text");

    std::vector<Entry> entries;
    const IniDocument document(bytes);
    int number = 0;
    for (const auto& line : document.lines()) {
        ++number;
        const auto text = QString::fromUtf8(withoutIniComment(line.text));
        if (text.isEmpty())
            continue;
        if (text.startsWith(u'[')) {
            if (!text.endsWith(u']'))
                return mistake(number, {}, text, "is a section without its closing bracket");
            if (line.section.isEmpty() || text.size() < 3)
                return mistake(number, {}, text, "is a section without a name");
            entries.push_back({Entry::Kind::sectionHeader, QString::fromUtf8(line.section), {}, {}, number});
            continue;
        }
        const auto equals = text.indexOf(u'=');
        if (equals < 0)
            return mistake(number, {}, text, "is neither a section nor key=value");
        const Entry entry{Entry::Kind::value, QString::fromUtf8(line.section), text.left(equals).trimmed(),
                          text.mid(equals + 1).trimmed(), number};
        if (entry.section.isEmpty())
            return mistake(number, entry.key, entry.value, "stands before the first section");
        entries.push_back(entry);
    }
    return entries;
}

std::optional<QString> mistakeInHost(const QString& value) {
    if (value.isEmpty())
        return u"is empty"_qs;
    if (value.contains(u"://"_qs) || value.contains(u'/'))
        return u"must be host or host:port, without scheme or path"_qs;

    QString host = value;
    std::optional<QString> port;
    if (value.startsWith(u'[')) {
        const auto close = value.indexOf(u']');
        if (close < 0)
            return u"has no closing bracket"_qs;
        host = value.left(close + 1);
        const QString rest = value.mid(close + 1);
        if (!rest.isEmpty() && !rest.startsWith(u':'))
            return u"has text after its closing bracket"_qs;
        if (!rest.isEmpty())
            port = rest.mid(1);
    } else if (const auto colons = value.count(u':'); colons > 1) {
        return u"is an IPv6 address without brackets"_qs;
    } else if (colons == 1) {
        host = value.section(u':', 0, 0);
        port = value.section(u':', 1);
    }

    if (host.isEmpty())
        return u"has no host"_qs;
    if (host.startsWith(u'[')) {
        static const QRegularExpression sixCharacters(uR"(\A\[[0-9A-Fa-f:.]+\]\z)"_qs);
        if (!sixCharacters.match(host).hasMatch() ||
            !QUrl(u"https://"_qs + host + u'/', QUrl::StrictMode).isValid())
            return u"is no IPv6 address"_qs;
    } else if (auto mistake = mistakeInName(host)) {
        return mistake;
    }
    static const QRegularExpression number(uR"(\A[1-9][0-9]{0,4}\z)"_qs);
    if (port && (!number.match(*port).hasMatch() || port->toInt() > 65535))
        return u"has a port that is not 1 to 65535"_qs;
    // The last word is the address parser's that the value will meet.
    if (!QUrl(u"https://"_qs + value + u'/', QUrl::StrictMode).isValid())
        return u"is no host"_qs;
    return std::nullopt;
}

} // namespace zofra::endpoints
