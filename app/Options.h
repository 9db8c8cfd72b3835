// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"
#include "stations/AppLanguage.h"
#include "stations/RadioStation.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace zofra {

/// What the command line asks for.
struct Options {
    enum class Task { run, help, version, status, statusJson, doctor, doctorJson, quit };

    Task task = Task::run;
    bool play = false;
    /// With `play`; absent plays the current station.
    std::optional<RadioStation> station;
    /// "here", "everywhere", or a room's title or id.
    std::optional<QString> output;
    /// For a first start only.
    std::optional<QString> endpointsFile;
    bool noDiscovery = false;
    bool headless = false;

    /// The options that only a first start understands, as given; empty when there are none.
    [[nodiscard]] QStringList firstStartOnly() const;
};

/// Reads the arguments (without the program's name), or answers in `language` the one line that says what is
/// wrong with them.
[[nodiscard]] Result<Options> parseOptions(const QStringList& arguments, AppLanguage language);

/// The station that `text` names: a raw value, or a display name or the beginning of just one, case not
/// counting.
[[nodiscard]] std::optional<RadioStation> stationNamed(const QString& text);

/// What `--help` prints, without a last line end.
[[nodiscard]] QString helpText(AppLanguage language);

} // namespace zofra
