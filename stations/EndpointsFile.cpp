// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/EndpointsFile.h"

#include <QRegularExpression>
#include <QStringConverter>
#include <QUrl>

namespace zofra::endpoints {
namespace {

/// The line without its comment and the blanks around it.
QString withoutComment(const QString& line) {
    for (qsizetype i = 0; i < line.size(); ++i) {
        const bool starts = line[i] == u';' || line[i] == u'#';
        if (starts && (i == 0 || line[i - 1].isSpace()))
            return line.left(i).trimmed();
    }
    return line.trimmed();
}

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

std::variant<std::vector<Entry>, Mistake> parse(const QByteArray& bytes) {
    if (bytes.size() > maxFileBytes)
        return Mistake{0, {}, {}, QStringLiteral("is larger than 64 KiB")};
    if (bytes.contains('\0'))
        return Mistake{0, {}, {}, QStringLiteral("is no text file")};
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return Mistake{0, {}, {}, QStringLiteral("is not UTF-8 text")};

    std::vector<Entry> entries;
    QString section;
    int number = 0;
    for (const auto& raw : text.split(u'\n')) {
        ++number;
        const QString line = withoutComment(raw);
        if (line.isEmpty())
            continue;
        if (line.startsWith(u'[')) {
            if (!line.endsWith(u']'))
                return Mistake{number, {}, line, QStringLiteral("is a section without its closing bracket")};
            section = line.mid(1, line.size() - 2).trimmed();
            if (section.isEmpty())
                return Mistake{number, {}, line, QStringLiteral("is a section without a name")};
            entries.push_back({Entry::Kind::sectionHeader, section, {}, {}, number});
            continue;
        }
        const auto equals = line.indexOf(u'=');
        if (equals < 0)
            return Mistake{number, {}, line, QStringLiteral("is neither a section nor key=value")};
        const Entry entry{Entry::Kind::value, section, line.left(equals).trimmed(),
                          line.mid(equals + 1).trimmed(), number};
        if (section.isEmpty())
            return Mistake{number, entry.key, entry.value, QStringLiteral("stands before the first section")};
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
