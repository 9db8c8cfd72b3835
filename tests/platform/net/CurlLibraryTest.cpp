// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/CurlLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace zofra;
using testing::Eq;
using testing::Optional;
using testing::ResultOf;

TEST(CurlLibraryTest, SaysWhyAndGivesNothingWhenItIsMissing) {
    const CurlLibrary library("libzofra-no-such-library.so");
    const auto beginsWell = [](const QString& text) {
        return text.startsWith(QStringLiteral("libcurl cannot be loaded: libzofra-no-such"));
    };
    EXPECT_THAT(library.problem, Optional(ResultOf(beginsWell, true)));
    EXPECT_EQ(library.easyInit(), nullptr);
    EXPECT_EQ(library.multiInit(), nullptr);
}

TEST(CurlLibraryTest, RefusesAnotherLibrary) {
    const CurlLibrary library("libm.so.6");
    EXPECT_THAT(library.problem,
                Optional(Eq(QStringLiteral("libcurl cannot be used: it has no curl_global_init"))));
    EXPECT_EQ(library.easyInit(), nullptr);
}

TEST(CurlLibraryTest, IsThere) {
    EXPECT_EQ(curl().problem, std::nullopt);
}

} // namespace
