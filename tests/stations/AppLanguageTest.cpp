// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/AppLanguage.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

TEST(AppLanguageTest, hasFourLanguagesInListOrder) {
    QStringList rawValues;
    for (const auto language : allAppLanguages)
        rawValues += rawValue(language);
    EXPECT_EQ(rawValues, (QStringList{QStringLiteral("en"), QStringLiteral("nl"), QStringLiteral("fr"),
                                      QStringLiteral("de")}));
}

TEST(AppLanguageTest, isMadeFromExactlyItsRawValue) {
    for (const auto language : allAppLanguages)
        EXPECT_EQ(appLanguageFromRawValue(rawValue(language)), language);
    for (const auto* text : {u"EN", u"De", u"", u"es", u"nl_BE", u" fr", u"en "})
        EXPECT_EQ(appLanguageFromRawValue(text), std::nullopt) << QStringView(text).toString().toStdString();
}

} // namespace
} // namespace zofra
