// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/ScraperPage.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

QString textOf(const QByteArray& body) {
    const auto page = ScraperPage::fromBody(body);
    return page ? page->text().value_or(u"(no text)"_qs) : u"(no page)"_qs;
}
const QString noText = u"(no text)"_qs;

TEST(ScraperPageTest, TakesTheTitleFirst) {
    EXPECT_EQ(textOf(R"({"artist":"A","track":"T","title":"X - Y"})"), u"X - Y"_qs);
    EXPECT_EQ(textOf("{\"title\" \n:\t \"X\"}"), u"X"_qs);
    EXPECT_EQ(textOf(R"("title":"first" "title":"second")"), u"first"_qs);
}

TEST(ScraperPageTest, JoinsArtistAndTrackWhenBothAreThere) {
    EXPECT_EQ(textOf(R"({"track":"T","artist":"A"})"), u"A – T"_qs);
    EXPECT_EQ(textOf(R"({"title":"","track":"T","artist":"A"})"), u"A – T"_qs);
    EXPECT_EQ(textOf(R"({"artist":"A"})"), noText);
    EXPECT_EQ(textOf(R"({"track":"T"})"), noText);
    EXPECT_EQ(textOf(R"({"artist":"A","track":""})"), noText);
}

TEST(ScraperPageTest, KeepsTheTextExactlyAsFound) {
    EXPECT_EQ(textOf(R"({"title":"Beyonc\u00e9 \/ A&amp;B "})"), uR"(Beyonc\u00e9 \/ A&amp;B )"_qs);
    EXPECT_EQ(textOf(R"({"title":" "})"), u" "_qs);
    EXPECT_EQ(textOf(R"({"title":"say \"hi\""})"), uR"(say \)"_qs)
        << "up to the next quotation mark, whatever precedes it";
    EXPECT_EQ(textOf("{\"title\":\"D\xC3\xA9j\xC3\xA0 \xF0\x9F\x98\x80\"}"), u"Déjà 😀"_qs);
}

TEST(ScraperPageTest, TextsGoOverLines) {
    EXPECT_EQ(textOf("{\"title\":\"a\nb\r\n\r\nc\"}"), u"a\nb\r\n\r\nc"_qs);
    EXPECT_EQ(textOf("<p>\n\"title\"\n:\n\"a\"\n</p>"), u"a"_qs);
}

TEST(ScraperPageTest, FindsNothingInOtherText) {
    for (const auto* body :
         {"", "<html><title>404</title></html>", "{\"title\":null}", "{\"title\":5}", "{\"Title\":\"X\"}",
          "{'title':'X'}", "\"title\"\"X\"", "\"title\":\"never ends", "title:\"X\"", "\"title\":\"\""})
        EXPECT_EQ(textOf(body), noText) << body;
}

TEST(ScraperPageTest, AnEmptyTitleIsPassedOver) {
    EXPECT_EQ(textOf(R"({"title":"","x":{"title":"later"}})"), u"later"_qs)
        << "the first match, not the first key";
}

TEST(ScraperPageTest, IsNoneWhenTheBodyIsNoUtf8) {
    EXPECT_FALSE(ScraperPage::fromBody("{\"title\":\"caf\xE9\"}"));
}

TEST(ScraperPageTest, CopesWithAMillionBytesOfAnything) {
    constexpr qsizetype size = 1024 * 1024;
    const auto padded = [](const QByteArray& head, const QByteArray& filler) {
        return head + filler.repeated((size - head.size()) / filler.size());
    };
    EXPECT_EQ(textOf(padded("", "\"title\"")), noText);
    EXPECT_EQ(textOf(padded("", "\"title\":1,")), noText);
    EXPECT_EQ(textOf(padded("", "\"title\" : \"\"")), noText);
    EXPECT_EQ(textOf(padded("\"title\"", " ")), noText);
    EXPECT_EQ(textOf(padded("\"title\":", "\n")), noText);
    EXPECT_EQ(textOf(padded("\"title\":\"", "x")), noText);
    EXPECT_EQ(textOf(padded("", "\"title\"          ")), noText);
    EXPECT_EQ(textOf(padded("\"title\":\"", "x") + '"').size(), size - 9);
}

} // namespace
} // namespace zofra
