// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/FrameFilter.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace zofra {

namespace {

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

std::optional<FrameHeader> FrameHeader::read(QByteArrayView bytes) {
    if (bytes.size() < bytesNeeded || static_cast<unsigned char>(bytes[0]) != 0xFF)
        return std::nullopt;
    std::array<unsigned, bytesNeeded> byte{};
    for (std::size_t i = 0; i < byte.size(); ++i)
        byte[i] = static_cast<unsigned char>(bytes[static_cast<qsizetype>(i)]);
    const auto adts = readAdts(byte);
    return adts ? adts : readMpeg(byte);
}

/// By chance, every few thousand bytes of anything look like a header; three that lead to each other do not.
constexpr int framesInARow = 3;
/// So much more must come before the next search.
constexpr qsizetype searchStep = 256;

} // namespace

void FrameFilter::put(QByteArrayView bytes) {
    m_input.append(bytes);
    m_bytesWithoutSound += bytes.size();
    while (m_isInStep || findFrames()) {
        passFrames();
        if (m_isInStep) // The rest of a frame is still to come.
            return;
    }
}

qsizetype FrameFilter::take(char* buffer, qsizetype size) {
    const auto count = std::min(size, m_frames.size() - m_taken);
    std::copy_n(m_frames.constData() + m_taken, count, buffer);
    m_taken += count;
    if (isEmpty()) {
        m_frames.resize(0); // Keeps what is allocated.
        m_taken = 0;
    }
    return count;
}

FrameFilter::Chain FrameFilter::chainAt(qsizetype at) const {
    auto kind = m_kind;
    for (int i = 0; i < framesInARow; ++i) {
        if (at + FrameHeader::bytesNeeded > m_input.size())
            return Chain::unfinished;
        const auto header = FrameHeader::read(QByteArrayView(m_input).sliced(at));
        if (!header || (kind != 0 && header->kind != kind))
            return Chain::none;
        kind = header->kind;
        at += header->length;
    }
    return Chain::whole;
}

/// Drops what cannot be the beginning of frames. False when more must come.
bool FrameFilter::findFrames() {
    if (m_input.size() < m_searchFrom)
        return false;
    qsizetype firstUnfinished = m_input.size();
    for (qsizetype at = 0; at < m_input.size(); ++at) {
        const auto chain = chainAt(at);
        if (chain == Chain::whole) {
            m_input.remove(0, at);
            m_isInStep = true;
            return true;
        }
        if (chain == Chain::unfinished)
            firstUnfinished = std::min(firstUnfinished, at);
    }
    m_input.remove(0, firstUnfinished);
    m_searchFrom = m_input.size() + searchStep;
    return false;
}

/// Lets the whole frames at the beginning through. Out of step when none begins where one should.
void FrameFilter::passFrames() {
    qsizetype at = 0;
    while (at + FrameHeader::bytesNeeded <= m_input.size()) {
        const auto header = FrameHeader::read(QByteArrayView(m_input).sliced(at));
        m_isInStep = header && (m_kind == 0 || header->kind == m_kind);
        if (!m_isInStep || at + header->length > m_input.size())
            break;
        m_kind = header->kind;
        m_sound += header->duration;
        at += header->length;
    }
    m_searchFrom = 0;
    if (at == 0)
        return;
    m_frames.append(m_input.constData(), at);
    m_input.remove(0, at);
    m_bytesWithoutSound = m_input.size();
}

} // namespace zofra
