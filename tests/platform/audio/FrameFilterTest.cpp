// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/FrameFilter.h"

#include "tests/support/PrintQt.h"

#include <QByteArray>

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

using namespace std::chrono_literals;

/// A frame of `size` bytes, its header included: 44.1 kHz.
QByteArray adtsFrame(int size) {
    QByteArray frame(size, 'a');
    frame[0] = char(0xFF);
    frame[1] = char(0xF1);
    frame[2] = 0x50;
    frame[3] = char(0x80 | (size >> 11));
    frame[4] = char(size >> 3);
    frame[5] = char((size << 5) | 0x1F);
    frame[6] = char(0xFC);
    return frame;
}

/// 128 kbit/s, 44.1 kHz.
QByteArray mp3Frame() {
    return QByteArray::fromHex("fffb9064") + QByteArray(413, '\0');
}

/// A tag that says to be `size` bytes long.
QByteArray tag(unsigned size) {
    QByteArray header = "ID3" + QByteArray::fromHex("040000");
    for (const unsigned shift : {21U, 14U, 7U, 0U})
        header.append(char((size >> shift) & 0x7FU));
    return header;
}

QByteArray taken(FrameFilter& filter) {
    QByteArray all(1'000'000, '\0');
    all.resize(filter.take(all.data(), all.size()));
    return all;
}

QByteArray passed(const QByteArray& bytes) {
    FrameFilter filter;
    filter.put(bytes);
    return taken(filter);
}

const QByteArray aac = adtsFrame(300) + adtsFrame(280) + adtsFrame(310);
const QByteArray mp3 = mp3Frame().repeated(3);

TEST(FrameFilterTest, passesWholeFrames) {
    EXPECT_TRUE(passed(aac) == aac);
    EXPECT_TRUE(passed(mp3) == mp3);
}

TEST(FrameFilterTest, beginsBehindTheRestOfABrokenFrame) {
    EXPECT_TRUE(passed(adtsFrame(400).mid(123) + aac) == aac);
    EXPECT_TRUE(passed(mp3Frame().mid(100) + mp3) == mp3);
}

TEST(FrameFilterTest, isNotBaitedByWhatOnlyLooksLikeAHeader) {
    EXPECT_TRUE(passed(adtsFrame(100).first(20) + aac) == aac);
}

TEST(FrameFilterTest, needsThreeFramesOfOneKindToBegin) {
    EXPECT_EQ(passed(adtsFrame(300) + adtsFrame(280)), QByteArray());
    EXPECT_EQ(passed(adtsFrame(300) + adtsFrame(280) + mp3Frame()), QByteArray());
    EXPECT_EQ(passed("\xFF"), QByteArray());
}

TEST(FrameFilterTest, takesTheThirdFrameByItsHeader) {
    const auto two = adtsFrame(300) + adtsFrame(280);
    EXPECT_TRUE(passed(two + adtsFrame(310).first(6)) == two);
    EXPECT_EQ(passed(two + adtsFrame(310).first(5)), QByteArray());
}

TEST(FrameFilterTest, knowsTheLengthsOfEveryKindOfFrame) {
    const auto frames = [](const char* header, int size) {
        return (QByteArray::fromHex(header) + QByteArray(size - 4, '\0')).repeated(3);
    };
    for (const auto& one : {frames("fffb9264", 418),  // padded
                            frames("fffbb464", 576),  // 192 kbit/s, 48 kHz
                            frames("fff38064", 208),  // MPEG 2, 64 kbit/s, 22.05 kHz
                            frames("ffe38064", 417),  // MPEG 2.5, 64 kbit/s, 11.025 kHz
                            frames("fffda464", 576),  // layer 2, 192 kbit/s, 48 kHz
                            frames("fff58464", 384)}) // layer 2, MPEG 2, 64 kbit/s, 24 kHz: 1152 samples
        EXPECT_TRUE(passed(one) == one) << one.first(4).toHex().constData();
}

TEST(FrameFilterTest, leavesOutWhatStandsBetweenFrames) {
    EXPECT_TRUE(passed(tag(20) + QByteArray(20, 'x') + aac) == aac);
    EXPECT_TRUE(passed(aac + tag(20) + QByteArray(20, 'x') + aac) == aac + aac);
    EXPECT_TRUE(passed(aac + tag(1U << 27U) + aac) == aac + aac) << "whatever length the tag claims";
}

TEST(FrameFilterTest, staysWithTheKindItBeganWith) {
    EXPECT_TRUE(passed(aac + mp3 + aac) == aac + aac) << "a decoder made for one cannot read the other";
}

TEST(FrameFilterTest, givesTheSameForPiecesAsForTheWhole) {
    const auto bytes = adtsFrame(400).mid(5) + aac + "noise" + aac.repeated(20);
    FrameFilter filter;
    QByteArray all;
    for (const char one : bytes) {
        filter.put(QByteArrayView(&one, 1));
        all += taken(filter);
    }
    EXPECT_TRUE(all == passed(bytes));
}

TEST(FrameFilterTest, givesOutNoMoreThanIsAskedFor) {
    FrameFilter filter;
    filter.put(aac);
    QByteArray piece(100, '\0');
    EXPECT_EQ(filter.take(piece.data(), piece.size()), 100);
    EXPECT_TRUE(piece == aac.first(100));
    EXPECT_FALSE(filter.isEmpty());
    EXPECT_TRUE(taken(filter) == aac.mid(100));
    EXPECT_TRUE(filter.isEmpty());
}

TEST(FrameFilterTest, countsSoundAndWhatIsNone) {
    FrameFilter filter;
    filter.put(aac);
    EXPECT_EQ(filter.sound(), 3 * 23'219us) << "1024 samples each";
    EXPECT_EQ(filter.bytesWithoutSound(), 0);
    filter.put(QByteArray(100'000, 'x'));
    EXPECT_EQ(filter.bytesWithoutSound(), 100'000);
    filter.put(aac);
    EXPECT_EQ(filter.sound(), 6 * 23'219us);
    EXPECT_EQ(filter.bytesWithoutSound(), 0);
}

TEST(FrameFilterTest, keepsLittleOfWhatIsNoSound) {
    FrameFilter filter;
    for (int i = 0; i < 100; ++i)
        filter.put(QByteArray(10'000, char(0xFF)) + adtsFrame(8191).first(7));
    filter.put(aac);
    EXPECT_TRUE(taken(filter) == aac);
}

} // namespace
} // namespace zofra::test
