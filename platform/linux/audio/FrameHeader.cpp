// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/FrameHeader.h"

#include <array>
#include <cstdint>

namespace zofra {

namespace {

std::chrono::microseconds durationOf(int samples, int rate) {
    return std::chrono::microseconds(std::int64_t{samples} * 1'000'000 / rate);
}

std::optional<FrameHeader> readAdts(const std::array<unsigned, FrameHeader::bytesNeeded>& byte) {
    if ((byte[1] & 0xF6U) != 0xF0)
        return std::nullopt;
    constexpr std::array<int, 13> rates{96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                        22050, 16000, 12000, 11025, 8000,  7350};
    const unsigned rateIndex = (byte[2] >> 2U) & 0xFU;
    const auto length = static_cast<qsizetype>(((byte[3] & 3U) << 11U) | (byte[4] << 3U) | (byte[5] >> 5U));
    if (rateIndex >= rates.size() || length <= 7)
        return std::nullopt;
    return FrameHeader{byte[1] & 0xFEU, length, durationOf(1024, rates[rateIndex])};
}

std::optional<FrameHeader> readMpeg(const std::array<unsigned, FrameHeader::bytesNeeded>& byte) {
    constexpr std::array<int, 15> layerTwo{0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384};
    constexpr std::array<int, 15> layerThree{0,   32,  40,  48,  56,  64,  80, 96,
                                             112, 128, 160, 192, 224, 256, 320};
    constexpr std::array<int, 15> lowRates{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};
    constexpr std::array<int, 3> rates{44100, 48000, 32000};
    const unsigned version = (byte[1] >> 3U) & 3U; // 3: MPEG 1, 2: MPEG 2, 0: MPEG 2.5
    const unsigned layer = (byte[1] >> 1U) & 3U;   // 2: layer 2, 1: layer 3
    const unsigned bitrateIndex = byte[2] >> 4U;
    const unsigned rateIndex = (byte[2] >> 2U) & 3U;
    if ((byte[1] & 0xE0U) != 0xE0 || version == 1 || (layer != 1 && layer != 2) || bitrateIndex == 0 ||
        bitrateIndex >= lowRates.size() || rateIndex >= rates.size())
        return std::nullopt;
    const bool isOne = version == 3;
    const int kbits = (!isOne ? lowRates : layer == 2 ? layerTwo : layerThree)[bitrateIndex];
    const int rate = rates[rateIndex] / (isOne ? 1 : version == 2 ? 2 : 4);
    const int samples = isOne || layer == 2 ? 1152 : 576;
    const int padding = static_cast<int>((byte[2] >> 1U) & 1U);
    return FrameHeader{byte[1] & 0xFEU, samples / 8 * kbits * 1000 / rate + padding,
                       durationOf(samples, rate)};
}

} // namespace

std::optional<FrameHeader> FrameHeader::read(QByteArrayView bytes) {
    if (bytes.size() < bytesNeeded || static_cast<unsigned char>(bytes[0]) != 0xFF)
        return std::nullopt;
    std::array<unsigned, bytesNeeded> byte{};
    for (std::size_t i = 0; i < byte.size(); ++i)
        byte[i] = static_cast<unsigned char>(bytes[static_cast<qsizetype>(i)]);
    const auto adts = readAdts(byte);
    return adts ? adts : readMpeg(byte);
}

} // namespace zofra
