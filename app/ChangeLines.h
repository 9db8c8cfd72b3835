// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioState.h"

#include <QStringList>

#include <optional>

namespace zofra {

/// Tells changes of the program's state as lines of text, for those who follow it without a desktop.
class ChangeLines {
public:
    /// One line for each thing that differs from the state before; for the first state, one for each thing
    /// there is.
    [[nodiscard]] QStringList update(const RadioState& state);

private:
    std::optional<RadioState> m_last;
};

} // namespace zofra
