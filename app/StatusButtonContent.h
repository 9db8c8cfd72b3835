// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"
#include "stations/LanguageManager.h"

#include <QString>

namespace zofra {

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

} // namespace zofra
