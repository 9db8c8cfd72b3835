// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/JsonText.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>
#include <tuple>

namespace zofra {
namespace {

class UnwrapJSONPTest : public testing::TestWithParam<std::tuple<QString, std::optional<QString>>> {};

TEST_P(UnwrapJSONPTest, GivesWhatStandsInside) {
    EXPECT_EQ(unwrapJSONP(std::get<0>(GetParam())), std::get<1>(GetParam()));
}

using Case = std::tuple<QString, std::optional<QString>>;
Case gives(const QString& text, const QString& inner) {
    return {text, inner};
}
Case isNothing(const QString& text) {
    return {text, std::nullopt};
}

INSTANTIATE_TEST_SUITE_P(PlainJson, UnwrapJSONPTest,
                         testing::Values(gives(u"{\"a\":1}"_qs, u"{\"a\":1}"_qs),
                                         gives(u" \r\n[1] \t"_qs, u"[1]"_qs),
                                         gives(u"{ not json at all"_qs, u"{ not json at all"_qs),
                                         gives(u"[];"_qs, u"[];"_qs), isNothing(QString()),
                                         isNothing(u" \n\t "_qs), isNothing(u"text"_qs),
                                         isNothing(u"\"text\""_qs)));

INSTANTIATE_TEST_SUITE_P(Calls, UnwrapJSONPTest,
                         testing::Values(gives(u"cb({\"a\":1})"_qs, u"{\"a\":1}"_qs),
                                         gives(u"cb({\"a\":1});;"_qs, u"{\"a\":1}"_qs),
                                         gives(u" cb ( {} ) ; \n ; "_qs, u"{}"_qs),
                                         gives(u"a.b_1([])"_qs, u"[]"_qs), gives(u"$(1)"_qs, u"1"_qs),
                                         gives(u"$jq.x(1)"_qs, u"1"_qs), gives(u"_(1)"_qs, u"1"_qs),
                                         gives(u"f(g(1))"_qs, u"g(1)"_qs), gives(u"f((1))"_qs, u"(1)"_qs),
                                         gives(u"f(;)"_qs, u";"_qs), gives(u"f.(1)"_qs, u"1"_qs)));

INSTANTIATE_TEST_SUITE_P(NoCalls, UnwrapJSONPTest,
                         testing::Values(isNothing(u"cb({}"_qs), isNothing(u"cb({};)x"_qs),
                                         isNothing(u"cb)"_qs), isNothing(u"({})"_qs), isNothing(u" ({})"_qs),
                                         isNothing(u"1cb({})"_qs), isNothing(u".cb({})"_qs),
                                         isNothing(u"a b({})"_qs), isNothing(u"a-b({})"_qs),
                                         isNothing(u"a\n({})x"_qs), isNothing(u"cb()"_qs),
                                         isNothing(u"cb( \n )"_qs), isNothing(u";"_qs), isNothing(u";;;"_qs),
                                         isNothing(u")"_qs), isNothing(u"("_qs), isNothing(u"a'(1)"_qs)));

INSTANTIATE_TEST_SUITE_P(
    UnicodeNames, UnwrapJSONPTest,
    testing::Values(gives(u"été(1)"_qs, u"1"_qs), gives(u"日本(1)"_qs, u"1"_qs), gives(u"x٣(1)"_qs, u"1"_qs),
                    isNothing(u"٣x(1)"_qs),
                    // Letters and digits beyond the first plane: 𝒳, 𐐷 and the digit 𝟘.
                    gives(u"\U0001D4B3(1)"_qs, u"1"_qs), gives(u"a\U00010437(1)"_qs, u"1"_qs),
                    gives(u"a\U0001D7D8(1)"_qs, u"1"_qs), isNothing(u"\U0001D7D8(1)"_qs),
                    // A letter with its combining mark, and a mark with nothing to stand on.
                    gives(u"e\u0301t(1)"_qs, u"1"_qs), isNothing(u"\u0301(1)"_qs),
                    isNothing(u"_\u0301(1)"_qs), isNothing(u"a\U0001F600(1)"_qs), isNothing(u"½(1)"_qs),
                    isNothing(u"a\u2160(1)"_qs), isNothing(QString(QChar(0xD835)) + u"(1)"_qs),
                    isNothing(u"a"_qs + QChar(0xDC00) + u"(1)"_qs)));

TEST(UnwrapJSONPTest, TakesTimeThatGrowsWithTheTextOnly) {
    // A million semicolons with blanks between them; peeling them off one copy at a time would take minutes.
    const QString many = QString(u"f(1)"_qs) + u" ;"_qs.repeated(500'000);
    EXPECT_EQ(unwrapJSONP(many), u"1"_qs);
}

} // namespace
} // namespace zofra
