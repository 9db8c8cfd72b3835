// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/DefaultsStore.h"
#include "stations/ServiceHosts.h"

#include <QHashFunctions>
#include <QJsonValue>
#include <QString>
#include <QStringView>
#include <QUrl>

#include <array>
#include <cstdint>
#include <optional>

namespace zofra {

/// One station of the fixed catalogue. A plain value, callable from any thread.
class RadioStation {
public:
    enum Case : std::uint8_t {
        zofra,
        qmusic,
        joe,
        zofraClassX,
        radioContact,
        belRTL,
        insideRadio,
        sudRadioBelgique,
        sudRadioHainaut,
    };

    /// A case is a station.
    constexpr RadioStation(Case value)
        : m_case(value) {}

    /// Every station, in the order in which lists show them.
    static constexpr std::array<Case, 9> allCases{zofra,       qmusic,           joe,
                                                  zofraClassX, radioContact,     belRTL,
                                                  insideRadio, sudRadioBelgique, sudRadioHainaut};

    /// The station with exactly this raw value (case-sensitive), if any.
    [[nodiscard]] static std::optional<RadioStation> fromRawValue(QStringView rawValue);
    /// The station that `value` encodes (its raw value as JSON text), if any.
    [[nodiscard]] static std::optional<RadioStation> fromJson(const QJsonValue& value) {
        return value.isString() ? fromRawValue(value.toString()) : std::nullopt;
    }
    [[nodiscard]] QJsonValue toJson() const { return rawValue(); }

    /// The persistent identifier.
    [[nodiscard]] QString rawValue() const { return entry().rawValue; }
    [[nodiscard]] QString id() const { return rawValue(); }
    [[nodiscard]] QString displayName() const { return entry().displayName; }
    /// The same in all languages.
    [[nodiscard]] QString genre() const { return entry().genre; }
    /// The station's id at the on-air search service.
    [[nodiscard]] std::optional<QString> radioplayerId() const { return entry().radioplayerId; }
    /// Its id on the live socket; absent for a station without a live feed.
    [[nodiscard]] std::optional<QString> liveSocketId() const { return entry().liveSocketId; }
    /// The path of its page at the now-playing scraper; absent for a station without one.
    [[nodiscard]] std::optional<QString> scraperPath() const { return entry().scraperPath; }

    /// Primary stream, an absolute https address.
    [[nodiscard]] QUrl streamAAC(const ServiceHosts& hosts) const;
    /// Fallback stream; for three stations deliberately the same as the primary one.
    [[nodiscard]] QUrl streamMP3(const ServiceHosts& hosts) const;
    /// The address a networked player is given, beginning with "x-rincon-mp3radio://".
    [[nodiscard]] QString networkPlayerStreamURI(const ServiceHosts& hosts) const;

    /// Settings key of the chosen station.
    static constexpr const char* savedStationKey = "zofra_selected_station";
    /// The user's last choice; `zofra` when there is none or it is no known raw value.
    [[nodiscard]] static RadioStation savedStation(const DefaultsStore& defaults) {
        const auto stored = defaults.string(QLatin1String(savedStationKey));
        return fromRawValue(stored.value_or(QString())).value_or(zofra);
    }
    static void setSavedStation(DefaultsStore& defaults, RadioStation station) {
        defaults.setString(QLatin1String(savedStationKey), station.rawValue());
    }

    friend constexpr bool operator==(RadioStation a, RadioStation b) { return a.m_case == b.m_case; }
    /// By raw value.
    friend size_t qHash(RadioStation station, size_t seed = 0) { return qHash(station.rawValue(), seed); }

private:
    /// What the catalogue says of a station.
    struct Entry {
        QString rawValue;
        QString displayName;
        QString genre;
        QString radioplayerId;
        QString pathAAC;
        QString pathMP3;
        std::optional<QString> liveSocketId{};
        std::optional<QString> scraperPath{};
        /// Which of the two hosts a networked player is sent to.
        ServiceHosts::StreamKind networkPlayerHost = ServiceHosts::StreamKind::mp3;
    };
    [[nodiscard]] const Entry& entry() const;

    Case m_case;
};

} // namespace zofra
