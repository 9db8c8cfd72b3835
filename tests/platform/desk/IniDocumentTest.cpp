// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/IniDocument.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

QByteArray read(const QByteArray& file, const QByteArray& key) {
    return IniDocument(file).value(key).value_or("(absent)");
}

QByteArray written(const QByteArray& file, const QByteArray& key, const QByteArray& value) {
    IniDocument document(file);
    document.setValue(key, value);
    EXPECT_EQ(document.value(key), value);
    EXPECT_EQ(IniDocument(document.bytes()).value(key), value) << document.bytes().toStdString();
    return document.bytes();
}

TEST(IniDocumentTest, readsPlainKeysOfTheGeneralSection) {
    EXPECT_EQ(read("[General]\na=1\nb = 2 \n", "a"), "1");
    EXPECT_EQ(read("[General]\na=1\nb = 2 \n", "b"), "2");
    EXPECT_EQ(read("a=1\n", "a"), "1") << "before the first section";
    EXPECT_EQ(read("[general]\na=1\n", "a"), "1");
    EXPECT_EQ(read("[ General ] ; yes\na=1", "a"), "1");
    EXPECT_EQ(read("[Other]\na=1\n", "a"), "(absent)");
    EXPECT_EQ(read("", "a"), "(absent)");
    EXPECT_EQ(read("[General]\na\n=a\n;a=1\n#a=1\n", "a"), "(absent)");
    EXPECT_EQ(read("[General]\nA=1\n", "a"), "(absent)") << "case counts";
}

TEST(IniDocumentTest, readsKeysWithASection) {
    EXPECT_EQ(read("[tray]\nmode=direct\n", "tray/mode"), "direct");
    EXPECT_EQ(read("[General]\ntray/mode=direct\n", "tray/mode"), "direct") << "written as one would say it";
    EXPECT_EQ(read("[tray]\nmode=direct\n", "mode"), "(absent)");
}

TEST(IniDocumentTest, letsTheLastOfTwoCount) {
    EXPECT_EQ(read("[General]\na=1\na=2\n[x]\n[General]\na=3\n", "a"), "3");
    EXPECT_EQ(written("[General]\na=1\na=2\n", "a", "9"), "[General]\na=1\na=9\n");
}

TEST(IniDocumentTest, readsWhatOtherEditorsLeave) {
    EXPECT_EQ(read("\xEF\xBB\xBF[General]\r\na=1\r\n", "a"), "1");
    EXPECT_EQ(read("\xEF\xBB\xBF"
                   "a=1",
                   "a"),
              "1");
    EXPECT_EQ(read("[General]\n\ta\t=\t1\t\n", "a"), "1");
}

TEST(IniDocumentTest, readsQuotesAndComments) {
    EXPECT_EQ(decodedIniValue("\"0.35\""), "0.35");
    EXPECT_EQ(decodedIniValue(" \" a ; b \"  ; note"), " a ; b ");
    EXPECT_EQ(decodedIniValue(R"("a\"b\\c\n\r\t\x41")"), "a\"b\\c\n\r\tA");
    EXPECT_EQ(decodedIniValue("\"\""), "");
    EXPECT_EQ(decodedIniValue("0.35 ; quiet"), "0.35");
    EXPECT_EQ(decodedIniValue("0.35\t# quiet"), "0.35");
    EXPECT_EQ(decodedIniValue("a;b#c"), "a;b#c");
    EXPECT_EQ(decodedIniValue("; all"), "");
    EXPECT_EQ(decodedIniValue("[{\"t\":\"a ; b # c\"}] "), "[{\"t\":\"a ; b # c\"}]");
    EXPECT_EQ(decodedIniValue("{\"t\": 1 } "), "{\"t\": 1 }");
    EXPECT_EQ(decodedIniValue(""), "");
    EXPECT_EQ(decodedIniValue("100%, 50%"), "100%, 50%");
}

TEST(IniDocumentTest, takesBadQuotesAsTheyStand) {
    EXPECT_EQ(decodedIniValue("\"open"), "\"open");
    EXPECT_EQ(decodedIniValue("\"a\" b"), "\"a\" b");
    EXPECT_EQ(decodedIniValue("\"a\\q\""), "\"a\\q\"");
    EXPECT_EQ(decodedIniValue("\"a\\x4"), "\"a\\x4");
    EXPECT_EQ(decodedIniValue("\"\\"), "\"\\");
    EXPECT_EQ(decodedIniValue("\""), "\"");
}

TEST(IniDocumentTest, writesPlainWherePlainReadsBack) {
    EXPECT_EQ(encodedIniValue("qmusic"), "qmusic");
    EXPECT_EQ(encodedIniValue("0.35"), "0.35");
    EXPECT_EQ(encodedIniValue("Vari\xC3\xA9t\xC3\xA9 & Pop"), "Vari\xC3\xA9t\xC3\xA9 & Pop");
    EXPECT_EQ(encodedIniValue(R"([{"id":"a","title":"Bad ; Küche"}])"),
              R"([{"id":"a","title":"Bad ; Küche"}])");
    EXPECT_EQ(encodedIniValue(""), "");
    EXPECT_EQ(encodedIniValue("a \"b\" c"), "a \"b\" c");
}

TEST(IniDocumentTest, quotesEverythingElseOnOneLine) {
    EXPECT_EQ(encodedIniValue(" a"), "\" a\"");
    EXPECT_EQ(encodedIniValue("a ; b"), "\"a ; b\"");
    EXPECT_EQ(encodedIniValue(";a"), "\";a\"");
    EXPECT_EQ(encodedIniValue("a\nb\r\tc"), R"("a\nb\r\tc")");
    EXPECT_EQ(encodedIniValue("\"a\""), R"("\"a\"")");
    EXPECT_EQ(encodedIniValue(QByteArray("a\0b", 3)), R"("a\x00b")");
    EXPECT_EQ(encodedIniValue("\xFF\xFE"), R"("\xff\xfe")");
    EXPECT_EQ(encodedIniValue("[\n1]"), R"("[\n1]")");
}

TEST(IniDocumentTest, readsBackEveryByteAndPair) {
    for (int first = 0; first < 256; ++first) {
        for (const int second : {0, 9, 10, 13, 32, 34, 35, 59, 91, 92, 93, 61, 123, 128, 255, 65}) {
            const auto value = QByteArray(1, static_cast<char>(first)) + static_cast<char>(second);
            for (const auto& text : {value, "a" + value + " ;b", value + "\\"}) {
                EXPECT_EQ(decodedIniValue(encodedIniValue(text)), text) << first << ' ' << second;
                EXPECT_FALSE(encodedIniValue(text).contains('\n'));
            }
        }
    }
}

TEST(IniDocumentTest, startsAnEmptyFileWithTheGeneralSection) {
    EXPECT_EQ(written("", "zofra_selected_station", "qmusic"), "[General]\nzofra_selected_station=qmusic\n");
    EXPECT_EQ(written("", "tray/mode", "auto"), "[tray]\nmode=auto\n");
}

TEST(IniDocumentTest, changesNothingButTheValue) {
    const QByteArray file =
        "; my radio\n\n[General]\n# loud\n  volume = 0.5   ; at night\nfoo=bar\n\n[Other]\nx=1\nnonsense\n";
    EXPECT_EQ(
        written(file, "volume", "0.25"),
        "; my radio\n\n[General]\n# loud\n  volume = 0.25   ; at night\nfoo=bar\n\n[Other]\nx=1\nnonsense\n");
    EXPECT_EQ(written(file, "new", "1"), "; my radio\n\n[General]\n# loud\n  volume = 0.5   ; at "
                                         "night\nfoo=bar\nnew=1\n\n[Other]\nx=1\nnonsense\n");
    EXPECT_EQ(written("[General]\nv=\"1\" ; note\n", "v", "2"), "[General]\nv=2 ; note\n");
    EXPECT_EQ(written("[General]\nv=; note\n", "v", "2"), "[General]\nv=2 ; note\n");
    EXPECT_EQ(written("[General]\nv=1 ; note\n", "v", "[1]"), "[General]\nv=\"[1]\" ; note\n");
    EXPECT_EQ(written("[General]\nv=1 ; note\n", "v", "a ; b"), "[General]\nv=\"a ; b\" ; note\n");
}

TEST(IniDocumentTest, replacesTheWholeValueBehindAnyWhiteSpace) {
    EXPECT_EQ(written("[General]\na=\v123\n", "a", "0.5"), "[General]\na=\v0.5\n");
    EXPECT_EQ(written("[General]\na=\f\t{1} \v\n", "a", "0.5"), "[General]\na=\f\t0.5 \v\n");
    EXPECT_EQ(written("[General]\na=\"1\"\v;b\n", "a", "0.5"), "[General]\na=0.5\v;b\n");
}

TEST(IniDocumentTest, keepsLineEndsAndByteOrderMark) {
    EXPECT_EQ(written("\xEF\xBB\xBF[General]\r\na=1\r\n", "b", "2"),
              "\xEF\xBB\xBF[General]\r\na=1\r\nb=2\r\n");
    EXPECT_EQ(written("\xEF\xBB\xBF[General]\r\na=1\r\n", "a", "2"), "\xEF\xBB\xBF[General]\r\na=2\r\n");
    EXPECT_EQ(written("[General]\na=1", "b", "2"), "[General]\na=1\nb=2\n");
    EXPECT_EQ(written("[General]\na=1", "a", "2"), "[General]\na=2");
    EXPECT_EQ(written("[tray]\nmode=x", "b", "2"), "[tray]\nmode=x\n[General]\nb=2\n");
}

TEST(IniDocumentTest, keepsWhatMakesNoSense) {
    const QByteArray garbage("\x00\xFF=\n[half\n[]\n[x]y\n\r\r\n====\n\x01", 27);
    EXPECT_EQ(IniDocument(garbage).bytes(), garbage);
    EXPECT_TRUE(written(garbage, "a", "1").startsWith(garbage + "\n"));
    EXPECT_EQ(written(garbage, "a", "1").mid(garbage.size() + 1), "[General]\na=1\n");
}

TEST(IniDocumentTest, addsToTheLastOfTwoSections) {
    EXPECT_EQ(written("[General]\na=1\n[x]\ny=1\n[General]\nb=1\n\n", "c", "2"),
              "[General]\na=1\n[x]\ny=1\n[General]\nb=1\nc=2\n\n");
    EXPECT_EQ(written("[General]\n\n\n", "c", "2"), "[General]\nc=2\n\n\n");
}

} // namespace
} // namespace zofra
