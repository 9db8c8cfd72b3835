// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/FrameStart.h"

#include <array>

namespace zofra {

namespace {

constexpr qsizetype headerBytes = 6;
constexpr int framesInARow = 3;

unsigned byteAt(QByteArrayView bytes, qsizetype at) {
    return static_cast<unsigned char>(bytes[at]);
}

/// The length of an ADTS frame; 0 when there is none here.
qsizetype adtsLength(QByteArrayView bytes, qsizetype at) {
    const unsigned second = byteAt(bytes, at + 1);
    if (byteAt(bytes, at) != 0xFF || (second & 0xF6U) != 0xF0)
        return 0;
    const unsigned rate = (byteAt(bytes, at + 2) >> 2U) & 0xFU;
    const auto length = static_cast<qsizetype>(((byteAt(bytes, at + 3) & 3U) << 11U) |
                                               (byteAt(bytes, at + 4) << 3U) | (byteAt(bytes, at + 5) >> 5U));
    return rate <= 12 && length > 7 ? length : 0;
}

/// The length of a frame of MPEG audio, layer 3, which is what stations send; 0 when there is none here.
qsizetype mpegLength(QByteArrayView bytes, qsizetype at) {
    const unsigned second = byteAt(bytes, at + 1);
    const unsigned third = byteAt(bytes, at + 2);
    if (byteAt(bytes, at) != 0xFF || (second & 0xE6U) != 0xE2)
        return 0;
    const unsigned version = (second >> 3U) & 3U; // 3: MPEG 1, 2: MPEG 2, 0: MPEG 2.5
    const unsigned bitrateIndex = third >> 4U;
    const unsigned rateIndex = (third >> 2U) & 3U;
    if (version == 1 || bitrateIndex == 0 || bitrateIndex == 15 || rateIndex == 3)
        return 0;
    constexpr std::array<int, 15> kbitsOne{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
    constexpr std::array<int, 15> kbitsTwo{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};
    constexpr std::array<int, 3> rates{44100, 48000, 32000};
    const bool isOne = version == 3;
    const int kbits = isOne ? kbitsOne.at(bitrateIndex) : kbitsTwo.at(bitrateIndex);
    const int rate = rates.at(rateIndex) >> (isOne ? 0 : version == 2 ? 1 : 2);
    const int padding = static_cast<int>((third >> 1U) & 1U);
    return (isOne ? 144 : 72) * kbits * 1000 / rate + padding;
}

/// Whether frames of one kind begin one after the other from `at` on.
bool areFramesAt(QByteArrayView bytes, qsizetype at, qsizetype (*lengthOf)(QByteArrayView, qsizetype)) {
    const unsigned kind = byteAt(bytes, at + 1) & 0xFEU; // all but whether there is a checksum
    for (int i = 0; i < framesInARow; ++i) {
        if (at + headerBytes > bytes.size())
            return false;
        const auto length = lengthOf(bytes, at);
        if (length == 0 || (byteAt(bytes, at + 1) & 0xFEU) != kind)
            return false;
        at += length;
    }
    return true;
}

} // namespace

std::optional<qsizetype> frameStart(QByteArrayView bytes) {
    if (bytes.startsWith("ID3")) // what is said before the sound
        return 0;
    const auto searched = bytes.first(qMin(bytes.size(), frameSearchBytes));
    for (qsizetype at = 0; at + headerBytes <= searched.size(); ++at) {
        for (auto* const lengthOf : {&adtsLength, &mpegLength}) {
            if (areFramesAt(searched, at, lengthOf))
                return at;
        }
    }
    if (searched.size() == frameSearchBytes)
        return 0;
    return std::nullopt;
}

} // namespace zofra
