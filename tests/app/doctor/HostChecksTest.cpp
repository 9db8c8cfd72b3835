// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/HostChecks.h"

#include "tests/support/FakeMetadataSocket.h"
#include "tests/support/FakeTaskPool.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>
#include <mutex>

namespace zofra::doctor {
namespace {

using namespace std::chrono_literals;

HostTarget target(HostTarget::Kind kind, const QStringList& paths) {
    HostTarget made{kind, u"radio.test"_qs, {u"key"_qs}, {}, {}};
    for (const auto& path : paths)
        made.urls.append(QUrl(u"https://radio.test"_qs + path));
    return made;
}

class HostChecksTest : public testing::Test {
protected:
    SendProbe send() {
        return [this](const HostProbe::Request& request) {
            const std::scoped_lock lock(mutex);
            requests.push_back(request);
            return probe;
        };
    }
    Check::Done done() {
        return
            [this](const Findings& findings) { found.insert(found.end(), findings.begin(), findings.end()); };
    }
    std::unique_ptr<LiveSocketCheck> startLive() {
        probe.status = 400;
        auto check =
            std::make_unique<LiveSocketCheck>(tasks, queue, target(HostTarget::Kind::live, {u"/x"_qs}),
                                              send(), sockets.maker(), AppLanguage::en);
        check->start(done());
        tasks.runAll();
        queue.drain();
        return check;
    }

    test::ManualMainQueue queue;
    test::FakeTaskPool tasks{test::FakeTaskPool::Mode::onDemand};
    test::FakeSocketFactory sockets;
    std::mutex mutex;
    std::vector<HostProbe::Request> requests;
    HostProbe probe;
    Findings found;
};

TEST_F(HostChecksTest, AskForEveryAddressAndAFirstByteOfSound) {
    probe.status = 200;
    const auto check =
        hostCheck(tasks, queue, target(HostTarget::Kind::stream, {u"/a"_qs, u"/b"_qs, u"/c"_qs}), send(),
                  AppLanguage::en);
    EXPECT_EQ(check->soFar().front().verdict, Verdict::problem) << "no answer in time";
    check->start(done());
    EXPECT_TRUE(requests.empty()) << "not on the caller's thread";
    tasks.runAll();
    queue.drain();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().verdict, Verdict::ok);
    ASSERT_EQ(requests.size(), 3U);
    for (const auto& request : requests)
        EXPECT_EQ(request.enoughBodyBytes, 1U);
}

TEST_F(HostChecksTest, TheLiveFeedIsFineOnceItHasSaidThatItIsOpen) {
    const auto check = startLive();
    EXPECT_EQ(sockets.last().url.scheme(), u"wss"_qs);
    EXPECT_EQ(sockets.last().resumes, 1);
    EXPECT_TRUE(found.empty());
    sockets.last().deliver(u"o"_qs);
    queue.drain();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().verdict, Verdict::ok);
    queue.advance(1min);
    EXPECT_EQ(found.size(), 1U) << "told once";
}

TEST_F(HostChecksTest, TheLiveFeedIsAProblemWhenItFailsSaysSomethingElseOrNothing) {
    const auto first = startLive();
    sockets.last().fail(u"closed"_qs);
    queue.drain();
    const auto second = startLive();
    sockets.last().deliver(u"c[3000,\"Go away!\"]"_qs);
    queue.drain();
    const auto third = startLive();
    queue.advance(5s);
    ASSERT_EQ(found.size(), 3U);
    EXPECT_TRUE(found[0].text.contains(u"closed"_qs));
    EXPECT_TRUE(found[1].text.contains(u"something else"_qs));
    EXPECT_TRUE(found[2].text.contains(u"says nothing"_qs));
}

TEST_F(HostChecksTest, NoSocketIsOpenedWhereTheHostDoesNotAnswer) {
    probe.failedAt = HostProbe::Step::name;
    const auto check = startLive();
    EXPECT_TRUE(sockets.sockets.empty());
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().verdict, Verdict::problem);
}

} // namespace
} // namespace zofra::doctor
