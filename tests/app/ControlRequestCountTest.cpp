// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ControlRequestCount.h"

#include "tests/support/FakeHttpSession.h"

#include <gtest/gtest.h>

namespace zofra::test {
namespace {

HttpRequest request(const QByteArray& method) {
    HttpRequest request;
    request.method = method;
    return request;
}

TEST(ControlRequestCountTest, CountsWhatChangesSomethingUntilItIsAnswered) {
    FakeHttpSession session;
    ControlRequestCount counting(session);
    int answers = 0;
    const auto answered = [&](const HttpResult&) { ++answers; };
    counting.start(request("POST"), answered);
    counting.start(request("POST"), {});
    counting.start(request("GET"), answered);
    EXPECT_EQ(counting.underWay(), 2);
    session.answer(200, {});
    EXPECT_EQ(counting.underWay(), 1);
    EXPECT_EQ(answers, 1);
    session.fail({});
    EXPECT_EQ(counting.underWay(), 0) << "a failure is an answer, also when nobody listens";
    session.answer(200, {});
    EXPECT_EQ(counting.underWay(), 0);
    EXPECT_EQ(answers, 2);
}

TEST(ControlRequestCountTest, MayEndBeforeItsRequestsDo) {
    FakeHttpSession session;
    int answers = 0;
    {
        ControlRequestCount counting(session);
        counting.start(request("POST"), [&](const HttpResult&) { ++answers; });
    }
    session.answer(200, {});
    EXPECT_EQ(answers, 1);
}

} // namespace
} // namespace zofra::test
