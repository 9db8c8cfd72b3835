// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/SpeakerCheck.h"

#include "tests/speakers/Samples.h"
#include "tests/support/FakeHttpSession.h"
#include "tests/support/FakeLocalNetwork.h"
#include "tests/support/FakeTaskPool.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/PrintQt.h"
#include "tests/support/RecordingOutput.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zofra::doctor {
namespace {

using namespace std::chrono_literals;

class SpeakerCheckTest : public testing::Test {
protected:
    SpeakerCheckTest() {
        network.addInterface(u"eth0"_qs, u"10.0.0.2"_qs, u"10.0.0.255"_qs);
        session.automatic = [this](const HttpRequest& request) {
            const int host = request.url.host().section(u'.', 3).toInt();
            if (request.method == "POST" || !players.contains(host))
                return test::failed(HttpError::Code::timedOut);
            return test::answered(200, test::description(QString::number(host), u"Room %1"_qs.arg(host)));
        };
    }
    Findings run() {
        SpeakerCheck check({session, queue, tasks, network, log}, AppLanguage::en);
        Findings found;
        check.start([&found](const Findings& findings) { found = findings; });
        tasks.runAll();
        queue.drain();
        return found;
    }

    test::ManualMainQueue queue;
    test::FakeTaskPool tasks{test::FakeTaskPool::Mode::onDemandThenInPlace};
    test::FakeHttpSession session;
    test::FakeLocalNetwork network;
    test::RecordingSystemLog log;
    QList<int> players;
};

TEST_F(SpeakerCheckTest, TellsWhatTheSearchFound) {
    players = {5, 6};
    network.scripts[u"10.0.0.2"_qs].datagrams = {test::ssdpAnswer(test::descriptionUrl(5).toString()),
                                                 test::ssdpAnswer(test::descriptionUrl(6).toString()),
                                                 "noise"};
    const auto found = run();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].text, u"eth0 10.0.0.2: searched, 2 answers"_qs);
    EXPECT_EQ(found[1].text, u"2 rooms: Room 5, Room 6 (players: 2 by the search)"_qs);
    EXPECT_EQ(network.sent().size(), 2U) << "one run, multicast and broadcast";
}

TEST_F(SpeakerCheckTest, AsksEveryAddressWhereNobodyAnswersAndIsQuickAboutIt) {
    players = {77};
    const auto found = run();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_TRUE(found[0].text.contains(u"multicast is blocked"_qs));
    EXPECT_EQ(found[1].text, u"1 room: Room 77 (players: 1 by asking every address)"_qs);
    const auto probes = std::count_if(session.requests.begin(), session.requests.end(),
                                      [](const HttpRequest& request) { return request.timeout == 900ms; });
    EXPECT_EQ(probes, 254);
}

TEST_F(SpeakerCheckTest, NoticesWhatTheSystemRefuses) {
    network.scripts[u"10.0.0.2"_qs].sendErrno = {{u"239.255.255.250"_qs, EPERM}, {u"10.0.0.255"_qs, EPERM}};
    session.automatic = [](const HttpRequest&) {
        return HttpResult(failure(HttpError{HttpError::Code::notConnected, EACCES, u"refused"_qs}));
    };
    const auto found = run();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_TRUE(found[0].text.contains(u"refuses the search"_qs));
    EXPECT_TRUE(found[1].text.contains(u"the local network is denied"_qs));
}

TEST_F(SpeakerCheckTest, EndsBeforeItsSearchDoes) {
    auto check = std::make_unique<SpeakerCheck>(
        SpeakerBackground::Outside{session, queue, tasks, network, log}, AppLanguage::en);
    bool isTold = false;
    check->start([&isTold](const Findings&) { isTold = true; });
    EXPECT_EQ(check->soFar().size(), 1U);
    check.reset();
    tasks.runAll();
    queue.drain();
    EXPECT_FALSE(isTold);
    EXPECT_TRUE(network.sent().empty());
}

} // namespace
} // namespace zofra::doctor
