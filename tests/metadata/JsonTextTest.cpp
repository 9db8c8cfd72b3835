// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/JsonText.h"

#include "tests/support/PrintQt.h"

#include <QJsonArray>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace zofra {
namespace {

std::optional<QJsonDocument> parseJsonText(const QByteArray& utf8) {
    JsonBudget budget;
    return zofra::parseJsonText(utf8, budget);
}

TEST(TextFromUtf8Test, DecodesWhatIsValid) {
    EXPECT_EQ(textFromUtf8("D\xC3\xA9j\xC3\xA0 \xE6\x97\xA5 \xF0\x9F\x98\x80"), u"Déjà 日 😀"_qs);
    EXPECT_EQ(textFromUtf8(QByteArray()), QString());
    EXPECT_EQ(textFromUtf8(QByteArray("a\0b", 3)), QString(u"a\0b"_qs));
}

TEST(TextFromUtf8Test, DropsAByteOrderMark) {
    EXPECT_EQ(textFromUtf8("\xEF\xBB\xBF{}"), u"{}"_qs);
}

class InvalidUtf8Test : public testing::TestWithParam<QByteArray> {};

TEST_P(InvalidUtf8Test, GivesNoText) {
    EXPECT_EQ(textFromUtf8(GetParam()), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Bytes, InvalidUtf8Test,
                         testing::Values(QByteArray("\xFF"), QByteArray("a\xC3"), QByteArray("\xC3("),
                                         QByteArray("\xE6\x97"), QByteArray("\xF0\x9F\x98"),
                                         QByteArray("\xC0\x80"), QByteArray("\xED\xA0\x80"),
                                         QByteArray("\xF4\x90\x80\x80"), QByteArray("caf\xE9")));

TEST(ParseJsonTextTest, ReadsObjectsAndArrays) {
    ASSERT_TRUE(parseJsonText("{\"a\":1}"));
    EXPECT_EQ(parseJsonText("{\"a\":1}")->object().value(QLatin1String("a")).toInt(), 1);
    ASSERT_TRUE(parseJsonText(" \r\n\t[1.5e3, -0.25, true, null, {}] "));
    EXPECT_EQ(parseJsonText("[1.5e3]")->array().at(0).toDouble(), 1500.0);
}

TEST(ParseJsonTextTest, ReadsEveryEscape) {
    const auto document = parseJsonText(R"(["\"\\\/\b\f\n\r\t\u00e9\u00E9\ud83d\ude00 ."])");
    ASSERT_TRUE(document);
    EXPECT_EQ(document->array().at(0).toString(), u"\"\\/\b\f\n\r\téé😀 ."_qs);
}

TEST(ParseJsonTextTest, TakesTheLastOfEqualKeys) {
    const auto document = parseJsonText(R"({"a":1,"b":2,"a":3})");
    ASSERT_TRUE(document);
    EXPECT_EQ(document->object().value(QLatin1String("a")).toInt(), 3);
}

TEST(ParseJsonTextTest, GoesDownAThousandLevelsAndNoFurther) {
    EXPECT_TRUE(parseJsonText(QByteArray(1000, '[') + QByteArray(1000, ']')));
    EXPECT_FALSE(parseJsonText(QByteArray(1100, '[') + QByteArray(1100, ']')));
    EXPECT_FALSE(parseJsonText(QByteArray(1024 * 1024, '[')));
}

TEST(ParseJsonTextTest, RefusesMoreValuesThanTheBudgetHolds) {
    const auto listOf = [](int count) { return "[" + QByteArray("1,").repeated(count - 1) + "1]"; };
    EXPECT_TRUE(parseJsonText(listOf(10'000)));
    EXPECT_FALSE(parseJsonText(listOf(10'001)));
    EXPECT_FALSE(parseJsonText("[" + QByteArray("{},").repeated(5'000) + "{}]"));
    EXPECT_TRUE(parseJsonText("[\"" + QByteArray("[,{").repeated(20'000) + "\"]"))
        << "what stands in a string is one value";
}

TEST(ParseJsonTextTest, SeveralDocumentsShareABudget) {
    JsonBudget budget{5};
    EXPECT_TRUE(parseJsonText("[1,2]", budget));
    EXPECT_EQ(budget.values, 3U);
    EXPECT_TRUE(parseJsonText("{}", budget));
    EXPECT_FALSE(parseJsonText("[1,2,3]", budget));
    EXPECT_FALSE(parseJsonText("[]", budget)) << "used up";
}

class MalformedJsonTest : public testing::TestWithParam<QByteArray> {};

TEST_P(MalformedJsonTest, GivesNothing) {
    EXPECT_FALSE(parseJsonText(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, MalformedJsonTest,
    testing::Values(QByteArray(), QByteArray(" "), QByteArray("\"text\""), QByteArray("1"),
                    QByteArray("true"), QByteArray("null"), QByteArray("{"), QByteArray("[1,]"),
                    QByteArray("{\"a\":}"), QByteArray("{\"a\" 1}"), QByteArray("{a:1}"), QByteArray("['a']"),
                    QByteArray("[] []"), QByteArray("[]x"), QByteArray("[\"a]"), QByteArray("[\"a\\\"]"),
                    QByteArray("[tru]"), QByteArray("[NaN]"), QByteArray("[Infinity]"), QByteArray("[0x10]"),
                    QByteArray("[01]"), QByteArray("[1.]"), QByteArray("[1.e5]"), QByteArray("[.5]"),
                    QByteArray("[+1]"), QByteArray("[-]"), QByteArray("[1e]"), QByteArray("[1e999]"),
                    QByteArray("[\"\n\"]"), QByteArray("[\"\t\"]"), QByteArray("[\"\0\"]", 5),
                    QByteArray("[\"\\x41\"]"), QByteArray("[\"\\u12\"]"), QByteArray("[\"\\u+123\"]"),
                    QByteArray("[\"\\ud83d\"]"), QByteArray("[\"\\ud83dx\"]"), QByteArray("[\"\\ud83d\\n\"]"),
                    QByteArray("[\"\\ud83d\\u0041\"]"), QByteArray("[\"\\ude00\"]"), QByteArray("[\"\xFF\"]"),
                    QByteArray("[\"\xED\xA0\x80\"]"), QByteArray("[\xC3\xA9]"), QByteArray("[1]\0", 4)));

} // namespace
} // namespace zofra
