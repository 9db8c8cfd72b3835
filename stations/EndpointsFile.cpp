// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/EndpointsFile.h"

#include "platform/IniDocument.h"

#include <QRegularExpression>
#include <QUrl>

namespace zofra::endpoints {
namespace {

bool isDottedQuad(const QString& host) {
    static const QRegularExpression quad(
        QStringLiteral(R"(\A(?:(?:25[0-5]|2[0-4]\d|1\d\d|[1-9]?\d)(?:\.(?!\z)|\z)){4}\z)"));
    return quad.match(host).hasMatch();
}

std::optional<QString> mistakeInName(const QString& host) {
    static const QRegularExpression label(
        QStringLiteral(R"(\A[A-Za-z0-9_](?:[A-Za-z0-9_-]{0,61}[A-Za-z0-9_])?\z)"));
    static const QRegularExpression digitsAndDots(QStringLiteral(R"(\A[\d.]+\z)"));
    if (digitsAndDots.match(host).hasMatch())
        return isDottedQuad(host) ? std::nullopt : std::optional(QStringLiteral("is no IPv4 address"));
    if (host.size() > 253)
        return QStringLiteral("is longer than a host name can be");
    for (const auto& part : host.split(u'.')) {
        if (!label.match(part).hasMatch())
            return QStringLiteral("is no host name");
    }
    return std::nullopt;
}

std::optional<QString> mistakeInPort(const QString& port) {
    static const QRegularExpression digits(QStringLiteral(R"(\A[1-9][0-9]{0,4}\z)"));
    if (!digits.match(port).hasMatch() || port.toInt() > 65535)
        return QStringLiteral("has a port that is not 1 to 65535");
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
        return QStringLiteral("is empty");
    if (value.contains(QStringLiteral("://")) || value.contains(u'/'))
        return QStringLiteral("must be host or host:port, without scheme or path");

    QString host = value;
    std::optional<QString> port;
    if (value.startsWith(u'[')) {
        const auto close = value.indexOf(u']');
        if (close < 0)
            return QStringLiteral("has no closing bracket");
        host = value.left(close + 1);
        const QString rest = value.mid(close + 1);
        if (!rest.isEmpty() && !rest.startsWith(u':'))
            return QStringLiteral("has text after its closing bracket");
        if (!rest.isEmpty())
            port = rest.mid(1);
    } else if (const auto colons = value.count(u':'); colons > 1) {
        return QStringLiteral("is an IPv6 address without brackets");
    } else if (colons == 1) {
        host = value.section(u':', 0, 0);
        port = value.section(u':', 1);
    }

    if (host.isEmpty())
        return QStringLiteral("has no host");
    if (host.startsWith(u'[')) {
        static const QRegularExpression sixCharacters(QStringLiteral(R"(\A\[[0-9A-Fa-f:.]+\]\z)"));
        if (!sixCharacters.match(host).hasMatch() ||
            !QUrl(QStringLiteral("https://") + host + u'/', QUrl::StrictMode).isValid())
            return QStringLiteral("is no IPv6 address");
    } else if (auto mistake = mistakeInName(host)) {
        return mistake;
    }
    if (port) {
        if (auto mistake = mistakeInPort(*port))
            return mistake;
    }
    // The last word is the address parser's that the value will meet.
    if (!QUrl(QStringLiteral("https://") + value + u'/', QUrl::StrictMode).isValid())
        return QStringLiteral("is no host");
    return std::nullopt;
}

} // namespace zofra::endpoints
