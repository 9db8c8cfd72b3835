// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/AppLanguage.h"
#include "stations/texts/Text.h"

#include <QLatin1String>
#include <QString>

#include <span>

namespace zofra {

/// One option of the command line. Parser, help, completions and manual page are all made of these.
struct OptionRow {
    enum class Id {
        play,
        stop,
        toggle,
        station,
        output,
        volume,
        stopIn,
        notify,
        song,
        status,
        follow,
        history,
        doctor,
        quit,
        endpoints,
        noDiscovery,
        headless,
        json,
        version,
        help
    };
    enum class Takes { nothing, valueOrNothing, value };
    /// What a shell may offer for the value.
    enum class Offers { nothing, stations, stationsAndSteps, outputs, files, onOrOff };

    Id id;
    /// With its dashes.
    QLatin1String name;
    Takes takes;
    /// What stands for the value in help and manual.
    QLatin1String value;
    Offers offers;
    const Text& help;
    /// What the manual page, which is in English, adds. In its markup.
    QLatin1String manual;

    /// Name and value, as the help shows them.
    [[nodiscard]] QString usage() const;
};

/// All options, in the order in which they are shown.
[[nodiscard]] std::span<const OptionRow> optionTable();
/// The raw values of all stations.
[[nodiscard]] QStringList stationNames();
/// What `--help` prints.
[[nodiscard]] QString helpText(AppLanguage language);

} // namespace zofra
