// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/RadioStation.h"

namespace zofra {
namespace {

/// Hosts were checked when they were read: an address that does not parse is a mistake in this program.
QUrl secureUrl(const QString& host, const QString& path) {
    const auto url = serviceUrl(u"https"_qs, host, path);
    if (!url)
        qFatal("no stream address: https://%s%s", qUtf8Printable(host), qUtf8Printable(path));
    return *url;
}

} // namespace

const RadioStation::Entry& RadioStation::entry() const {
    static const std::array<Entry, allCases.size()> catalogue{{
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
         u"/cm96zpmrmm0uv"_qs, u"/cm96zpmrmm0uv"_qs, std::nullopt, std::nullopt,
         ServiceHosts::StreamKind::aac},
        {u"sud_radio_belgique"_qs, u"Sud Radio Belgique"_qs, u"Variété & Pop"_qs, u"154"_qs,
         u"/sudradio-belgique"_qs, u"/sudradio-belgique"_qs},
        {u"sud_radio_hainaut"_qs, u"Sud Radio Hainaut"_qs, u"Regional Mons & Pop"_qs, u"1108"_qs,
         u"/sudradio-hainaut"_qs, u"/sudradio-hainaut"_qs},
    }};
    return catalogue.at(m_case);
}

std::optional<RadioStation> RadioStation::fromRawValue(QStringView rawValue) {
    for (const RadioStation station : allCases) {
        if (station.entry().rawValue == rawValue)
            return station;
    }
    return std::nullopt;
}

QUrl RadioStation::streamAAC(const ServiceHosts& hosts) const {
    return secureUrl(hosts.streamHost(rawValue(), ServiceHosts::StreamKind::aac), entry().pathAAC);
}

QUrl RadioStation::streamMP3(const ServiceHosts& hosts) const {
    return secureUrl(hosts.streamHost(rawValue(), ServiceHosts::StreamKind::mp3), entry().pathMP3);
}

QString RadioStation::networkPlayerStreamURI(const ServiceHosts& hosts) const {
    return u"x-rincon-mp3radio://"_qs + hosts.streamHost(rawValue(), entry().networkPlayerHost) +
           entry().pathMP3;
}

} // namespace zofra
