// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"
#include "stations/AppLanguage.h"
#include "stations/RadioStation.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace zofra {

/// What the command line asks for.
struct Options {
    enum class Task { run, help, version, status, song, follow, history, doctor, quit };
    enum class Playback { leave, play, stop, toggle };
    enum class StationStep { none, next, previous };
    struct Volume {
        enum class Kind { absolute, change };
        Kind kind = Kind::absolute;
        int percent = 0;
        friend bool operator==(const Volume&, const Volume&) = default;
    };

    Task task = Task::run;
    /// For a script rather than a person.
    bool isJson = false;

    Playback playback = Playback::leave;
    /// With `play` it is what is heard next, else it is only chosen.
    std::optional<RadioStation> station;
    StationStep stationStep = StationStep::none;
    /// "here", "everywhere", or a room's title or id.
    std::optional<QString> output;
    std::optional<Volume> volume;
    /// Nothing takes an earlier wish back.
    std::optional<std::chrono::seconds> stopIn;

    /// Whether new songs are announced from now on.
    std::optional<bool> notify;

    /// For a first start only.
    std::optional<QString> endpointsFile;
    bool noDiscovery = false;
    bool headless = false;

    /// The language to answer in.
    AppLanguage language = AppLanguage::en;

    /// The options that only a first start understands, as given; empty when there are none.
    [[nodiscard]] QStringList firstStartOnly() const;
    /// Something is to be done with the radio.
    [[nodiscard]] bool acts() const;
    /// What is to be done makes sense only where the program runs already.
    [[nodiscard]] bool needsRunning() const;

    friend bool operator==(const Options&, const Options&) = default;
};

/// Reads the arguments (without the program's name), or says in one line of `language` what is wrong.
[[nodiscard]] Result<Options> parseOptions(const QStringList& arguments,
                                           AppLanguage language = AppLanguage::en);

/// The station with this raw value, display name or unambiguous beginning of one, case not counting.
[[nodiscard]] std::optional<RadioStation> stationNamed(const QString& text);

/// "40", "+5" or "-5"; nothing above 100.
[[nodiscard]] std::optional<Options::Volume> volumeNamed(const QString& text);

/// "on" or "off".
[[nodiscard]] std::optional<bool> switchNamed(const QString& text);

/// "90s", "45m", "1h30m", "45" (minutes) or "off", which is nothing; a day at most.
[[nodiscard]] std::optional<std::chrono::seconds> durationNamed(const QString& text);

} // namespace zofra
