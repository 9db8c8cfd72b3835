// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>

#include <chrono>
#include <optional>

namespace zofra {

/// What a frame of sound (ADTS AAC, or MPEG audio of layers 2 and 3) says of itself.
struct FrameHeader {
    /// So many of a frame's bytes tell.
    static constexpr qsizetype bytesNeeded = 6;

    /// The header at the beginning of `bytes`; nothing where no frame begins or fewer than `bytesNeeded` are
    /// there.
    [[nodiscard]] static std::optional<FrameHeader> read(QByteArrayView bytes);

    /// The same for every frame of a stream.
    unsigned kind = 0;
    /// Bytes of the whole frame.
    qsizetype length = 0;
    /// How long it sounds.
    std::chrono::microseconds duration{0};
};

} // namespace zofra
