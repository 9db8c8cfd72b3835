// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/RadioStation.h"

namespace zofra {
namespace {

struct Entry {
    QString rawValue;
    QString displayName;
    QString genre;
    QString radioplayerId;
    QString pathAAC;
    QString pathMP3;
    /// Which of the two hosts a networked player is sent to.
    ServiceHosts::StreamKind networkPlayerHost = ServiceHosts::StreamKind::mp3;
};

using Catalogue = std::array<Entry, RadioStation::allCases.size()>;

Catalogue makeCatalogue() {
    using Kind = ServiceHosts::StreamKind;
    return {{
        {QStringLiteral("zofra"), QStringLiteral("Zofra"), QStringLiteral("Alternative Rock & Indie"),
         QStringLiteral("5067"), QStringLiteral("/zofra.aac"), QStringLiteral("/zofra.mp3")},
        {QStringLiteral("qmusic"), QStringLiteral("Qmusic"), QStringLiteral("Hits & Pop"),
         QStringLiteral("5050"), QStringLiteral("/qmusic.aac"), QStringLiteral("/qmusic.mp3")},
        {QStringLiteral("joe"), QStringLiteral("JOE"), QStringLiteral("80s, 90s & Pop Classics"),
         QStringLiteral("5051"), QStringLiteral("/joe.aac"), QStringLiteral("/joe.mp3")},
        {QStringLiteral("zofra_class_x"), QStringLiteral("Zofra Class X"),
         QStringLiteral("Classics & Classic Rock"), QStringLiteral("5077"),
         QStringLiteral("/zofra_classx.aac"), QStringLiteral("/zofra_classx.mp3")},
        {QStringLiteral("radio_contact"), QStringLiteral("Radio Contact"), QStringLiteral("Feel Good & Hits"),
         QStringLiteral("1"), QStringLiteral("/radiocontact-mp3-192.mp3"),
         QStringLiteral("/radiocontact-mp3-192.mp3")},
        {QStringLiteral("bel_rtl"), QStringLiteral("Bel RTL"), QStringLiteral("Info, Talk & Pop"),
         QStringLiteral("6"), QStringLiteral("/33prmb9subpwv"), QStringLiteral("/belrtl-mp3-192.mp3")},
        // Speakers are sent to the primary edge of this station, not to the fallback's.
        {QStringLiteral("inside_radio"), QStringLiteral("Inside Radio"),
         QStringLiteral("Pop & Contemporary Hits"), QStringLiteral("1011"), QStringLiteral("/cm96zpmrmm0uv"),
         QStringLiteral("/cm96zpmrmm0uv"), Kind::aac},
        {QStringLiteral("sud_radio_belgique"), QStringLiteral("Sud Radio Belgique"),
         QStringLiteral("Variété & Pop"), QStringLiteral("154"), QStringLiteral("/sudradio-belgique"),
         QStringLiteral("/sudradio-belgique")},
        {QStringLiteral("sud_radio_hainaut"), QStringLiteral("Sud Radio Hainaut"),
         QStringLiteral("Regional Mons & Pop"), QStringLiteral("1108"), QStringLiteral("/sudradio-hainaut"),
         QStringLiteral("/sudradio-hainaut")},
    }};
}

const Entry& entryOf(RadioStation station) {
    static const Catalogue catalogue = makeCatalogue();
    return catalogue.at(station.value());
}

/// Paths are constants and hosts were checked when they were read, so an address that does not parse is a
/// mistake in this program.
QUrl secureUrl(const QString& host, const QString& path) {
    QUrl url(QStringLiteral("https://") + host + path, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        qFatal("no stream address: https://%s%s", qUtf8Printable(host), qUtf8Printable(path));
    return url;
}

} // namespace

std::optional<RadioStation> RadioStation::fromRawValue(QStringView rawValue) {
    for (const auto station : allCases) {
        if (entryOf(station).rawValue == rawValue)
            return station;
    }
    return std::nullopt;
}

std::optional<RadioStation> RadioStation::fromJson(const QJsonValue& value) {
    return value.isString() ? fromRawValue(value.toString()) : std::nullopt;
}

QJsonValue RadioStation::toJson() const {
    return rawValue();
}

QString RadioStation::rawValue() const {
    return entryOf(*this).rawValue;
}

QString RadioStation::displayName() const {
    return entryOf(*this).displayName;
}

QString RadioStation::genre() const {
    return entryOf(*this).genre;
}

std::optional<QString> RadioStation::radioplayerId() const {
    return entryOf(*this).radioplayerId;
}

QUrl RadioStation::streamAAC(const ServiceHosts& hosts) const {
    const auto& entry = entryOf(*this);
    return secureUrl(hosts.streamHost(entry.rawValue, ServiceHosts::StreamKind::aac), entry.pathAAC);
}

QUrl RadioStation::streamMP3(const ServiceHosts& hosts) const {
    const auto& entry = entryOf(*this);
    return secureUrl(hosts.streamHost(entry.rawValue, ServiceHosts::StreamKind::mp3), entry.pathMP3);
}

QString RadioStation::networkPlayerStreamURI(const ServiceHosts& hosts) const {
    const auto& entry = entryOf(*this);
    return QStringLiteral("x-rincon-mp3radio://") +
           hosts.streamHost(entry.rawValue, entry.networkPlayerHost) + entry.pathMP3;
}

RadioStation RadioStation::savedStation(const DefaultsStore& defaults) {
    const auto stored = defaults.string(QLatin1String(savedStationKey));
    return stored ? fromRawValue(*stored).value_or(zofra) : zofra;
}

void RadioStation::setSavedStation(DefaultsStore& defaults, RadioStation station) {
    defaults.setString(QLatin1String(savedStationKey), station.rawValue());
}

} // namespace zofra
