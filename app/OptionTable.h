// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/Options.h"
#include "stations/texts/Text.h"

#include <QLatin1String>
#include <QString>
#include <QStringList>

#include <optional>
#include <span>
#include <variant>

namespace zofra {

/// One option of the command line. Parser, help, completions and manual page are all made of these.
struct OptionRow {
    enum class Takes { nothing, valueOrNothing, value };
    /// Options whose value means more than a text.
    enum class Special { play, station, volume, stopIn, notify };
    /// What it sets: a task, a wish for playback, a switch, a text, or what only the parser knows.
    using Meaning = std::variant<Options::Task, Options::Playback, bool Options::*,
                                 std::optional<QString> Options::*, Special>;

    /// With its dashes.
    QLatin1String name;
    Meaning meaning;
    /// What stands for the value in help and manual, in brackets where it may be left out.
    QLatin1String value;
    /// The words that a shell may offer for the value.
    QString offers;
    const Text& help;
    /// What the manual page, which is in English, adds. In its markup.
    QLatin1String manual;

    [[nodiscard]] Takes takes() const {
        return value.isEmpty() ? Takes::nothing : value[0] == u'[' ? Takes::valueOrNothing : Takes::value;
    }
    [[nodiscard]] bool takesFile() const { return value == u"FILE"; }
    /// Name and value, as the help shows them.
    [[nodiscard]] QString usage() const {
        return value.isEmpty() ? QString(name) : QString(name) + u' ' + value;
    }
};

/// All options, in the order in which they are shown.
[[nodiscard]] std::span<const OptionRow> optionTable();
/// The raw values of all stations.
[[nodiscard]] QStringList stationNames();
/// What `--help` prints.
[[nodiscard]] QString helpText(AppLanguage language);

// What is installed beside the program.
[[nodiscard]] QString bashCompletion();
[[nodiscard]] QString zshCompletion();
[[nodiscard]] QString fishCompletion();
/// The options of the manual page, in its markup.
[[nodiscard]] QString manualOptions();

} // namespace zofra
