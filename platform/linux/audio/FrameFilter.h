// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <chrono>

namespace zofra {

/// Lets whole frames of sound through and nothing else. A station begins wherever it is at the moment, mostly
/// inside a frame; it may send tags between frames, and whoever is hostile sends tags without an end. The
/// engine meets none of it. A plain value.
class FrameFilter {
public:
    /// Takes what came. At most a few kilobytes of it wait for more.
    void put(QByteArrayView bytes);
    /// Takes out up to `size` bytes of frames. 0 when there are none.
    [[nodiscard]] qsizetype take(char* buffer, qsizetype size);
    [[nodiscard]] bool isEmpty() const { return m_taken == m_frames.size(); }

    /// How long everything let through sounds.
    [[nodiscard]] std::chrono::microseconds sound() const { return m_sound; }
    /// What came since the latest frame that was let through.
    [[nodiscard]] qsizetype bytesWithoutSound() const { return m_bytesWithoutSound; }

private:
    enum class Chain { none, whole, unfinished };
    [[nodiscard]] Chain chainAt(qsizetype at) const;
    [[nodiscard]] bool findFrames();
    void passFrames();

    /// What is not judged yet.
    QByteArray m_input;
    QByteArray m_frames;
    qsizetype m_taken = 0;
    /// A search that was in vain is not made again for a few bytes more.
    qsizetype m_searchFrom = 0;
    bool m_isInStep = false;
    /// Of the first frame; the others are of the same. 0 before it.
    unsigned m_kind = 0;
    std::chrono::microseconds m_sound{0};
    qsizetype m_bytesWithoutSound = 0;
};

} // namespace zofra
