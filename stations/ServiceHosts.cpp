// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/ServiceHosts.h"

#include "platform/ForeignText.h"
#include "stations/EndpointsFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <initializer_list>

namespace zofra {
namespace {

// Keys of the table are "section/key"; these are the ones outside [streams].
const QString liveSocketKey = QStringLiteral("metadata/live_socket");
const QString onAirKey = QStringLiteral("metadata/on_air");
const QString scraperKey = QStringLiteral("metadata/scraper");
const QString extraAuthorityKey = QStringLiteral("tls/extra_ca");

QString streamKey(const QString& stationRawValue, ServiceHosts::StreamKind kind) {
    return QStringLiteral("streams/") + stationRawValue +
           (kind == ServiceHosts::StreamKind::aac ? QStringLiteral("_aac") : QStringLiteral("_mp3"));
}

const QHash<QString, QString>& builtInTable() {
    static const QHash<QString, QString> table = [] {
        struct Pair {
            const char* station;
            const char* aac;
            const char* mp3;
        };
        QHash<QString, QString> values;
        // The stations' public servers. Names under .example are to be set by whoever runs the station
        // group's service; the edges of the streaming CDN and the regional server of Sud Radio Belgique are
        // unconfirmed.
        for (const auto& pair : std::initializer_list<Pair>{
                 {"zofra", "streams.zofra.example", "streams.zofra.example"},
                 {"qmusic", "icecast-qmusicbe-cdp.triple-it.nl", "icecast-qmusicbe-cdp.triple-it.nl"},
                 {"joe", "icecast-qmusicbe-cdp.triple-it.nl", "icecast-qmusicbe-cdp.triple-it.nl"},
                 {"zofra_class_x", "icecast.zofra.example", "icecast.zofra.example"},
                 {"radio_contact", "radiocontact.ice.infomaniak.ch", "radiocontact.ice.infomaniak.ch"},
                 {"bel_rtl", "stream.rcs.revma.com", "belrtl.ice.infomaniak.ch"},
                 {"inside_radio", "n08a-eu.rcs.revma.com", "n13.rcs.revma.com"},
                 {"sud_radio_belgique", "stream.ceit.be", "stream.ceit.be"},
                 {"sud_radio_hainaut", "stream.ceit.be", "stream.ceit.be"},
             }) {
            const auto station = QString::fromLatin1(pair.station);
            values.insert(streamKey(station, ServiceHosts::StreamKind::aac), QString::fromLatin1(pair.aac));
            values.insert(streamKey(station, ServiceHosts::StreamKind::mp3), QString::fromLatin1(pair.mp3));
        }
        values.insert(liveSocketKey, QStringLiteral("socket.qmusic.be"));
        values.insert(onAirKey, QStringLiteral("core-search.radioplayer.cloud"));
        values.insert(scraperKey, QStringLiteral("scraper.onlineradiobox.com"));
        return values;
    }();
    return table;
}

/// One line whatever the parts contain; parts that are empty are left out.
QString refusal(const QString& file, const QString& key, const QString& value, const QString& reason,
                int line = 0) {
    QString text = file;
    if (line > 0)
        text += u':' + QString::number(line);
    text += QStringLiteral(": ");
    if (!key.isEmpty())
        text += key;
    if (!key.isEmpty() && !value.isEmpty())
        text += QStringLiteral(" = ");
    text += value;
    if (!key.isEmpty() || !value.isEmpty())
        text += QStringLiteral(": ");
    text += reason;
    return maskedText(text);
}

std::optional<QString> mistakeInAuthorityFile(const QString& path) {
    if (path.isEmpty())
        return QStringLiteral("is empty");
    const QFileInfo info(path);
    if (!info.isAbsolute())
        return QStringLiteral("is no absolute path");
    if (!info.exists())
        return QStringLiteral("no such file");
    if (!info.isFile())
        return QStringLiteral("is no file");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot be read: ") + file.errorString();
    return std::nullopt;
}

std::optional<QString> mistakeInEntry(const endpoints::Entry& entry) {
    static const QSet<QString> sections{QStringLiteral("streams"), QStringLiteral("metadata"),
                                        QStringLiteral("tls")};
    if (!sections.contains(entry.section))
        return QStringLiteral("unknown section [") + entry.section + u']';
    if (entry.kind == endpoints::Entry::Kind::sectionHeader)
        return std::nullopt;
    const QString key = entry.section + u'/' + entry.key;
    if (key == extraAuthorityKey)
        return mistakeInAuthorityFile(entry.value);
    if (!builtInTable().contains(key))
        return QStringLiteral("unknown key in [") + entry.section + u']';
    return endpoints::mistakeInHost(entry.value);
}

} // namespace

ServiceHosts::ServiceHosts()
    : m_values(builtInTable()) {}

QString ServiceHosts::streamHost(const QString& stationRawValue, StreamKind kind) const {
    auto host = m_values.value(streamKey(stationRawValue, kind));
    Q_ASSERT(!host.isEmpty());
    return host;
}

QString ServiceHosts::liveSocketHost() const {
    return m_values.value(liveSocketKey);
}

QString ServiceHosts::onAirHost() const {
    return m_values.value(onAirKey);
}

QString ServiceHosts::scraperHost() const {
    return m_values.value(scraperKey);
}

std::optional<QString> ServiceHosts::extraAuthorityFile() const {
    const auto found = m_values.constFind(extraAuthorityKey);
    return found != m_values.constEnd() ? std::optional(*found) : std::nullopt;
}

ServiceHosts::Refusal ServiceHosts::overlay(const QString& path, MissingFile missing) {
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink()) {
        if (missing == MissingFile::isFine)
            return std::nullopt;
        return refusal(path, {}, {}, QStringLiteral("no such file"));
    }
    if (info.isDir())
        return refusal(path, {}, {}, QStringLiteral("is a directory"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return refusal(path, {}, {}, QStringLiteral("cannot be read: ") + file.errorString());
    const auto bytes = file.read(endpoints::maxFileBytes + 1);
    if (file.error() != QFileDevice::NoError)
        return refusal(path, {}, {}, QStringLiteral("cannot be read: ") + file.errorString());

    const auto parsed = endpoints::parse(bytes);
    if (const auto* mistake = std::get_if<endpoints::Mistake>(&parsed))
        return refusal(path, mistake->key, mistake->value, mistake->reason, mistake->line);

    auto values = m_values;
    QSet<QString> seen;
    for (const auto& entry : std::get<std::vector<endpoints::Entry>>(parsed)) {
        const QString key = entry.section + u'/' + entry.key;
        if (const auto mistake = mistakeInEntry(entry))
            return refusal(path, entry.key, entry.value, *mistake, entry.line);
        if (entry.kind == endpoints::Entry::Kind::sectionHeader)
            continue;
        if (seen.contains(key))
            return refusal(path, entry.key, entry.value, QStringLiteral("stands there twice"), entry.line);
        seen.insert(key);
        values.insert(key, entry.value);
    }
    m_values = std::move(values);
    return std::nullopt;
}

} // namespace zofra
