// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <vector>

namespace zofra {

/// One option the engine is made with.
struct MpvOption {
    /// Without a required one there is no sound: it keeps the listener safe or the player right.
    enum class Need { required, ifKnown };
    const char* name;
    QByteArray value;
    Need need;
};

/// Every option.
[[nodiscard]] std::vector<MpvOption> mpvOptions();

/// The engine's number for a linear amplitude of 0 to 1: its scale is cubic, 100 is full.
[[nodiscard]] double mpvVolume(float linear);

} // namespace zofra
