// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>

#include <optional>

namespace zofra {

/// Stations begin wherever they are at the moment, mostly inside a frame of sound. Whoever has to recognise
/// what it is needs to begin with a whole one.

/// This much is looked at in search of frames.
inline constexpr qsizetype frameSearchBytes = 16'384;

/// Where the first of three whole frames of sound in a row (ADTS AAC or MPEG audio) begins in what has come
/// so far. Nothing while more may tell; 0 where there are none, for then it is something else and not ours to
/// cut.
[[nodiscard]] std::optional<qsizetype> frameStart(QByteArrayView bytes);

} // namespace zofra
