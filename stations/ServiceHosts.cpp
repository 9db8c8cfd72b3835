// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/ServiceHosts.h"

#include "platform/ForeignText.h"
#include "platform/RegularFile.h"
#include "stations/EndpointsFile.h"

#include <QSet>

namespace zofra {
namespace {

const QString extraAuthorityKey = u"tls/extra_ca"_qs;

/// The stations' public servers; the keys are "section/key". Names under .example are to be set by whoever
/// runs the station group's service; the edges of the streaming CDN and the regional server of Sud Radio
/// Belgique are unconfirmed.
const QHash<QString, QString>& builtInTable() {
    static const QHash<QString, QString> table{
        {u"streams/zofra_aac"_qs, u"streams.zofra.example"_qs},
        {u"streams/zofra_mp3"_qs, u"streams.zofra.example"_qs},
        {u"streams/qmusic_aac"_qs, u"icecast-qmusicbe-cdp.triple-it.nl"_qs},
        {u"streams/qmusic_mp3"_qs, u"icecast-qmusicbe-cdp.triple-it.nl"_qs},
        {u"streams/joe_aac"_qs, u"icecast-qmusicbe-cdp.triple-it.nl"_qs},
        {u"streams/joe_mp3"_qs, u"icecast-qmusicbe-cdp.triple-it.nl"_qs},
        {u"streams/zofra_class_x_aac"_qs, u"icecast.zofra.example"_qs},
        {u"streams/zofra_class_x_mp3"_qs, u"icecast.zofra.example"_qs},
        {u"streams/radio_contact_aac"_qs, u"radiocontact.ice.infomaniak.ch"_qs},
        {u"streams/radio_contact_mp3"_qs, u"radiocontact.ice.infomaniak.ch"_qs},
        {u"streams/bel_rtl_aac"_qs, u"stream.rcs.revma.com"_qs},
        {u"streams/bel_rtl_mp3"_qs, u"belrtl.ice.infomaniak.ch"_qs},
        {u"streams/inside_radio_aac"_qs, u"n08a-eu.rcs.revma.com"_qs},
        {u"streams/inside_radio_mp3"_qs, u"n13.rcs.revma.com"_qs},
        {u"streams/sud_radio_belgique_aac"_qs, u"stream.ceit.be"_qs},
        {u"streams/sud_radio_belgique_mp3"_qs, u"stream.ceit.be"_qs},
        {u"streams/sud_radio_hainaut_aac"_qs, u"stream.ceit.be"_qs},
        {u"streams/sud_radio_hainaut_mp3"_qs, u"stream.ceit.be"_qs},
        {u"metadata/live_socket"_qs, u"socket.qmusic.be"_qs},
        {u"metadata/on_air"_qs, u"core-search.radioplayer.cloud"_qs},
        {u"metadata/scraper"_qs, u"scraper.onlineradiobox.com"_qs}};
    return table;
}

/// One line whatever the parts contain; parts that are empty are left out.
tl::unexpected<QString> refusal(const QString& file, const endpoints::Mistake& mistake) {
    QString text = file;
    if (mistake.line > 0)
        text += u':' + QString::number(mistake.line);
    QStringList parts{mistake.key, mistake.value};
    parts.removeAll(QString());
    if (!parts.isEmpty())
        text += u": "_qs + parts.join(u" = "_qs);
    return failure(maskedText(text + u": "_qs + mistake.reason));
}

std::optional<QString> mistakeInAuthorityFile(const QString& path) {
    if (path.isEmpty())
        return u"is empty"_qs;
    if (!path.startsWith(u'/'))
        return u"is no absolute path"_qs;
    const auto file = readRegularFile(path, 1);
    if (!file)
        return u"cannot be read: "_qs + file.error();
    return *file ? std::nullopt : std::optional(u"no such file"_qs);
}

std::optional<QString> mistakeInEntry(const endpoints::Entry& entry) {
    static const QSet<QString> sections{u"streams"_qs, u"metadata"_qs, u"tls"_qs};
    if (!sections.contains(entry.section))
        return u"unknown section ["_qs + entry.section + u']';
    if (entry.kind == endpoints::Entry::Kind::sectionHeader)
        return std::nullopt;
    const QString key = entry.section + u'/' + entry.key;
    if (key == extraAuthorityKey)
        return mistakeInAuthorityFile(entry.value);
    if (!builtInTable().contains(key))
        return u"unknown key in ["_qs + entry.section + u']';
    return endpoints::mistakeInHost(entry.value);
}

} // namespace

ServiceHosts::ServiceHosts()
    : m_values(builtInTable()) {}

QString ServiceHosts::streamHost(const QString& stationRawValue, StreamKind kind) const {
    const auto format = kind == StreamKind::aac ? u"aac"_qs : u"mp3"_qs;
    auto host = m_values.value(u"streams/%1_%2"_qs.arg(stationRawValue, format));
    Q_ASSERT(!host.isEmpty());
    return host;
}

std::optional<QString> ServiceHosts::extraAuthorityFile() const {
    const auto found = m_values.constFind(extraAuthorityKey);
    return found != m_values.constEnd() ? std::optional(*found) : std::nullopt;
}

Result<void> ServiceHosts::overlay(const QString& path, MissingFile missing) {
    const auto bytes = readRegularFile(path, endpoints::maxFileBytes + 1);
    if (!bytes)
        return refusal(path, {.reason = u"cannot be read: "_qs + bytes.error()});
    if (!*bytes) {
        // A link that leads nowhere was meant to be read.
        if (missing == MissingFile::isFine && !isLink(path))
            return {};
        return refusal(path, {.reason = u"no such file"_qs});
    }
    const auto entries = endpoints::parse(**bytes);
    if (!entries)
        return refusal(path, entries.error());

    auto values = m_values;
    QSet<QString> seen;
    for (const auto& entry : *entries) {
        const QString key = entry.section + u'/' + entry.key;
        auto mistake = mistakeInEntry(entry);
        if (!mistake && entry.kind == endpoints::Entry::Kind::sectionHeader)
            continue;
        if (!mistake && seen.contains(key))
            mistake = u"stands there twice"_qs;
        if (mistake)
            return refusal(path, {entry.line, entry.key, entry.value, *mistake});
        seen.insert(key);
        values.insert(key, entry.value);
    }
    m_values = std::move(values);
    return {};
}

Result<ServiceHosts> ServiceHosts::load(const QStringList& layers,
                                        const std::optional<QString>& commandLineFile) {
    ServiceHosts hosts;
    Result<void> good;
    for (const auto& layer : layers)
        good = good ? hosts.overlay(layer, MissingFile::isFine) : good;
    if (good && commandLineFile)
        good = hosts.overlay(*commandLineFile, MissingFile::isRefused);
    return good.map([&] { return hosts; });
}

std::optional<QUrl> serviceUrl(const QString& scheme, const QString& host, const QString& pathAndQuery) {
    const QUrl url(scheme + u"://"_qs + host + pathAndQuery, QUrl::StrictMode);
    return url.isValid() && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

} // namespace zofra
