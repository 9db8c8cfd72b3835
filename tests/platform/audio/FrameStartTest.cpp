// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/FrameStart.h"

#include <QByteArray>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

/// A frame of `size` bytes, its header included.
QByteArray adtsFrame(int size) {
    QByteArray frame(size, 'a');
    frame[0] = char(0xFF);
    frame[1] = char(0xF1);
    frame[2] = 0x50; // 44.1 kHz
    frame[3] = char(0x80 | (size >> 11));
    frame[4] = char(size >> 3);
    frame[5] = char((size << 5) | 0x1F);
    frame[6] = char(0xFC);
    return frame;
}

QByteArray mp3Frame() {
    return QByteArray::fromHex("fffb9064") + QByteArray(413, '\0'); // 128 kbit/s, 44.1 kHz
}

TEST(FrameStart, isZeroWhereAFrameBegins) {
    EXPECT_EQ(frameStart(adtsFrame(300) + adtsFrame(280) + adtsFrame(310)), 0);
    EXPECT_EQ(frameStart(mp3Frame().repeated(3)), 0);
}

TEST(FrameStart, isBehindTheRestOfABrokenFrame) {
    const auto aac = adtsFrame(300) + adtsFrame(280) + adtsFrame(310);
    EXPECT_EQ(frameStart(adtsFrame(400).mid(123) + aac), 277);
    EXPECT_EQ(frameStart(mp3Frame().mid(100) + mp3Frame().repeated(3)), 317);
}

TEST(FrameStart, isNotTakenForAHeaderThatOnlyLooksLikeOne) {
    const auto bait = adtsFrame(100).first(20);
    EXPECT_EQ(frameStart(bait + adtsFrame(300) + adtsFrame(280) + adtsFrame(310)), 20);
}

TEST(FrameStart, needsThreeFramesOfOneKind) {
    EXPECT_EQ(frameStart(adtsFrame(300) + adtsFrame(280)), std::nullopt);
    EXPECT_EQ(frameStart(adtsFrame(300) + adtsFrame(280) + mp3Frame()), std::nullopt);
    EXPECT_EQ(frameStart({}), std::nullopt);
    EXPECT_EQ(frameStart("\xFF"), std::nullopt);
}

TEST(FrameStart, takesTheThirdFrameByItsHeader) {
    EXPECT_EQ(frameStart(adtsFrame(300) + adtsFrame(280) + adtsFrame(310).first(6)), 0);
    EXPECT_EQ(frameStart(adtsFrame(300) + adtsFrame(280) + adtsFrame(310).first(5)), std::nullopt);
}

TEST(FrameStart, knowsTheLengthsOfMpegTwoAndPaddedFrames) {
    const auto frame = [](const char* header, int size) {
        return QByteArray::fromHex(header) + QByteArray(size - 4, '\0');
    };
    EXPECT_EQ(frameStart(frame("fffb9264", 418).repeated(3)), 0) << "padded";
    EXPECT_EQ(frameStart(frame("fffbb464", 576).repeated(3)), 0) << "192 kbit/s, 48 kHz";
    EXPECT_EQ(frameStart(frame("fff38064", 208).repeated(3)), 0) << "MPEG 2, 64 kbit/s, 22.05 kHz";
    EXPECT_EQ(frameStart(frame("ffe38064", 417).repeated(3)), 0) << "MPEG 2.5, 64 kbit/s, 11.025 kHz";
}

TEST(FrameStart, leavesATagBeforeTheSoundInPlace) {
    EXPECT_EQ(frameStart("ID3" + mp3Frame().repeated(3)), 0);
}

TEST(FrameStart, leavesWhatHoldsNoSoundAsItIs) {
    EXPECT_EQ(frameStart(QByteArray(frameSearchBytes - 1, 'x')), std::nullopt) << "more may tell";
    EXPECT_EQ(frameStart(QByteArray(frameSearchBytes, 'x')), 0);
    EXPECT_EQ(frameStart(QByteArray(frameSearchBytes, char(0xFF))), 0);
}

} // namespace
} // namespace zofra::test
