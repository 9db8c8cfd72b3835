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
    /// These two are empty where there is none.
    QString liveSocketId{};
    QString scraperPath{};
    /// Which of the two hosts a networked player is sent to.
    ServiceHosts::StreamKind networkPlayerHost = ServiceHosts::StreamKind::mp3;
};

const Entry& entryOf(RadioStation station) {
    static const std::array<Entry, RadioStation::allCases.size()> catalogue{{
        {u"zofra"_qs, u"Zofra"_qs, u"Alternative Rock & Indie"_qs, u"5067"_qs, u"/zofra.aac"_qs,
         u"/zofra.mp3"_qs, u"zofra_be"_qs, u"/be.zofra"_qs},
        {u"qmusic"_qs, u"Qmusic"_qs, u"Hits & Pop"_qs, u"5050"_qs, u"/qmusic.aac"_qs, u"/qmusic.mp3"_qs,
         u"qmusic_be"_qs, u"/be.qmusic"_qs},
        {u"joe"_qs, u"JOE"_qs, u"80s, 90s & Pop Classics"_qs, u"5051"_qs, u"/joe.aac"_qs, u"/joe.mp3"_qs,
         u"joe_fm"_qs, u"/be.joe"_qs},
        {u"zofra_class_x"_qs, u"Zofra Class X"_qs, u"Classics & Classic Rock"_qs, u"5077"_qs,
         u"/zofra_classx.aac"_qs, u"/zofra_classx.mp3"_qs, u"zofra_be_class_x"_qs, u"/be.zofraclassx"_qs},
        {u"radio_contact"_qs, u"Radio Contact"_qs, u"Feel Good & Hits"_qs, u"1"_qs,
         u"/radiocontact-mp3-192.mp3"_qs, u"/radiocontact-mp3-192.mp3"_qs},
        {u"bel_rtl"_qs, u"Bel RTL"_qs, u"Info, Talk & Pop"_qs, u"6"_qs, u"/33prmb9subpwv"_qs,
         u"/belrtl-mp3-192.mp3"_qs},
        // Speakers are sent to the primary edge of this station, not to the fallback's.
        {u"inside_radio"_qs, u"Inside Radio"_qs, u"Pop & Contemporary Hits"_qs, u"1011"_qs,
         u"/cm96zpmrmm0uv"_qs, u"/cm96zpmrmm0uv"_qs, QString(), QString(), ServiceHosts::StreamKind::aac},
        {u"sud_radio_belgique"_qs, u"Sud Radio Belgique"_qs, u"Variété & Pop"_qs, u"154"_qs,
         u"/sudradio-belgique"_qs, u"/sudradio-belgique"_qs},
        {u"sud_radio_hainaut"_qs, u"Sud Radio Hainaut"_qs, u"Regional Mons & Pop"_qs, u"1108"_qs,
         u"/sudradio-hainaut"_qs, u"/sudradio-hainaut"_qs},
    }};
    return catalogue.at(station.value());
}

std::optional<QString> unlessEmpty(const QString& text) {
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

/// Hosts were checked when they were read: an address that does not parse is a mistake in this program.
QUrl secureUrl(const QString& host, const QString& path) {
    const auto url = serviceUrl(u"https"_qs, host, path);
    if (!url)
        qFatal("no stream address: https://%s%s", qUtf8Printable(host), qUtf8Printable(path));
    return *url;
}

} // namespace

std::optional<RadioStation> RadioStation::fromRawValue(QStringView rawValue) {
    for (const auto station : allCases) {
        if (entryOf(station).rawValue == rawValue)
            return station;
    }
    return std::nullopt;
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

std::optional<QString> RadioStation::liveSocketId() const {
    return unlessEmpty(entryOf(*this).liveSocketId);
}

std::optional<QString> RadioStation::scraperPath() const {
    return unlessEmpty(entryOf(*this).scraperPath);
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
    return u"x-rincon-mp3radio://"_qs + hosts.streamHost(entry.rawValue, entry.networkPlayerHost) +
           entry.pathMP3;
}

RadioStation RadioStation::savedStation(const DefaultsStore& defaults) {
    const auto stored = defaults.string(QLatin1String(savedStationKey));
    return stored ? fromRawValue(*stored).value_or(zofra) : zofra;
}

void RadioStation::setSavedStation(DefaultsStore& defaults, RadioStation station) {
    defaults.setString(QLatin1String(savedStationKey), station.rawValue());
}

} // namespace zofra
