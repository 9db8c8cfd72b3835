// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"
#include "stations/LanguageManager.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace zofra {

// What the command line and status bars are told of the program's state.

/// What the status-bar button shows.
struct StatusButtonContent {
    QString title;
    /// A name of the program's own drawings.
    QString symbol;
    /// Says in a word what the symbol shows.
    QString statusWord;
    /// Lines separated by line feeds.
    QString toolTip;
};

/// The button for `state`, in the language of `languages`.
[[nodiscard]] StatusButtonContent statusButtonContent(const RadioState& state,
                                                      const LanguageManager& languages);

/// The object that `--status --json` prints at the moment `now`.
[[nodiscard]] QJsonObject toJson(const RadioState& state, const QString& version, TimePoint now);
/// What `--status` prints of that object, a line for each field.
[[nodiscard]] QString statusLines(const QJsonObject& report);

/// What a status bar is given of `state`: `text`, `tooltip` (lines), `class` ("playing", "buffering" or
/// "stopped") and `percentage` (the volume).
[[nodiscard]] QJsonObject barLine(const RadioState& state, const LanguageManager& languages);
/// The same while the program does not run: no text, the class "off".
[[nodiscard]] QJsonObject emptyBarLine();
/// The text alone, for bars that take lines. Some bars act on what they find between braces after a percent
/// sign; a song's title must not be able to.
[[nodiscard]] QString plainBarLine(const QJsonObject& line);

/// Tells changes of the program's state as lines of text, for those who follow it without a desktop.
class ChangeLines {
public:
    /// One line for each thing that differs from the state before; at first, for each thing there is.
    [[nodiscard]] QStringList update(const RadioState& state);

private:
    std::optional<RadioState> m_last;
};

} // namespace zofra
