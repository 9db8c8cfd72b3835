// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/SocketInbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace zofra;
using testing::ElementsAre;
using testing::IsEmpty;

const QString first = QStringLiteral("first");

class SocketInboxTest : public testing::Test {
protected:
    /// Notes what it is told.
    SocketInbox::Handler noted() {
        return
            [this](const auto& result) { told.append(result ? std::get<QString>(*result) : result.error()); };
    }

    SocketInbox inbox{2, 1000};
    QStringList told;
};

TEST_F(SocketInboxTest, WhoWaitsIsToldTheNextMessageOnce) {
    EXPECT_TRUE(inbox.waitFor(noted()));
    EXPECT_TRUE(inbox.put(first));
    EXPECT_TRUE(inbox.put(QStringLiteral("second")));
    EXPECT_THAT(told, ElementsAre(first));
}

TEST_F(SocketInboxTest, NobodyWaitsForWhatIsThere) {
    EXPECT_TRUE(inbox.put(first));
    EXPECT_FALSE(inbox.waitFor(noted()));
    EXPECT_THAT(told, IsEmpty());
    inbox.receive(noted());
    EXPECT_THAT(told, ElementsAre(first));
}

TEST_F(SocketInboxTest, NobodyWaitsAfterTheEnd) {
    inbox.end(QStringLiteral("over"));
    EXPECT_FALSE(inbox.waitFor(noted()));
    inbox.receive(noted());
    EXPECT_THAT(told, ElementsAre(QStringLiteral("over")));
}

TEST_F(SocketInboxTest, OneWaitsAtATime) {
    EXPECT_TRUE(inbox.waitFor(noted()));
    EXPECT_FALSE(inbox.waitFor(noted()));
    EXPECT_TRUE(inbox.put(first));
    EXPECT_THAT(told, ElementsAre(first));
}

} // namespace
