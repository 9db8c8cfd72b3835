// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Finding.h"

#include <optional>

namespace zofra::doctor {

/// What the session bus says about the running program.
struct ProgramFacts {
    bool hasBus = false;
    /// Where the bus should be; empty when nothing says so.
    QString busAddress;
    bool isRunning = false;
    /// 0 when unknown.
    uint processId = 0;
    /// What it answered; absent when it did not, or not in the form of a state.
    std::optional<QJsonObject> status;
    bool hasMediaName = false;
    /// Of the program that asks.
    QString ownVersion;
};

/// The session bus, on which media keys and a second start find the program.
[[nodiscard]] Finding judgeBus(const ProgramFacts& facts, AppLanguage language = AppLanguage::en);
/// Whether one is running, and how it does.
[[nodiscard]] Finding judgeProgram(const ProgramFacts& facts, AppLanguage language = AppLanguage::en);

} // namespace zofra::doctor
