// SPDX-License-Identifier: GPL-3.0-or-later
// Every state of the socket with every event that can happen in it.
#include "tests/metadata/ModelTest.h"

#include <array>
#include <tuple>

namespace zofra::test {
namespace {

enum class Event {
    startWebSocket,
    openFrame,
    heartbeat,
    track,
    closeFrame,
    receiveError,
    joinError,
    joinSent,
    tick,
    tickAfterSilence,
    fiveSeconds,
    otherLiveStation,
    stationWithoutFeed,
};

void PrintTo(Event event, std::ostream* out) {
    constexpr std::array names{
        "startWebSocket", "openFrame",        "heartbeat",         "track", "closeFrame",
        "receiveError",   "joinError",        "joinSent",          "tick",  "tickAfterSilence",
        "fiveSeconds",    "otherLiveStation", "stationWithoutFeed"};
    *out << names.at(static_cast<std::size_t>(event));
}

struct Transition {
    SocketState from;
    Event event;
    SocketState to;
    /// Sockets made by the event.
    std::size_t made = 0;
    /// Whether the socket there was has been closed.
    std::size_t closed = 0;
};

void PrintTo(const Transition& transition, std::ostream* out) {
    PrintTo(transition.from, out);
    *out << " + ";
    PrintTo(transition.event, out);
}

class ModelStateTableTest : public ModelTest, public testing::WithParamInterface<Transition> {
protected:
    void bringTo(SocketState wanted) {
        make(RadioStation::zofra);
        model->startPolling();
        if (wanted != SocketState::idle)
            model->startWebSocket();
        if (wanted == SocketState::connected)
            frame(u"o"_qs);
        if (wanted == SocketState::waitingToReconnect)
            frame(u"c[3000,\"Go away!\"]"_qs);
        ASSERT_EQ(state(), wanted);
    }

    void happen(Event event) {
        switch (event) {
        case Event::startWebSocket:
            return model->startWebSocket();
        case Event::openFrame:
            return frame(u"o"_qs);
        case Event::heartbeat:
            return frame(u"h"_qs);
        case Event::track:
            return frame(trackFrame(u"zofra_be"_qs, u"Song"_qs));
        case Event::closeFrame:
            return frame(u"c[1000,\"Bye\"]"_qs);
        case Event::receiveError:
            return failSocket(u"lost"_qs);
        case Event::joinError:
            sockets.last().finishSend(failure(u"lost"_qs));
            return queue.drain();
        case Event::joinSent:
            sockets.last().finishSend({});
            return queue.drain();
        case Event::tick:
            return queue.advance(15s);
        case Event::tickAfterSilence:
            return queue.advance(45s);
        case Event::fiveSeconds:
            return queue.advance(5s);
        case Event::otherLiveStation:
            return model->setStation(RadioStation::joe);
        case Event::stationWithoutFeed:
            return model->setStation(RadioStation::belRTL);
        }
    }
};

TEST_P(ModelStateTableTest, LeadsTo) {
    const auto& transition = GetParam();
    bringTo(transition.from);
    const auto before = sockets.sockets.size();
    const auto old = before > 0 ? sockets.sockets.back() : nullptr;
    const auto closedBefore = old ? old->cancels.size() : 0;

    happen(transition.event);

    EXPECT_EQ(state(), transition.to);
    EXPECT_EQ(sockets.sockets.size() - before, transition.made);
    EXPECT_EQ((old ? old->cancels.size() : 0) - closedBefore, transition.closed);
}

using enum SocketState;
INSTANTIATE_TEST_SUITE_P(Idle, ModelStateTableTest,
                         testing::Values(Transition{idle, Event::startWebSocket, connecting, 1},
                                         Transition{idle, Event::tick, connecting, 1},
                                         Transition{idle, Event::otherLiveStation, connecting, 1},
                                         Transition{idle, Event::stationWithoutFeed, idle}));
INSTANTIATE_TEST_SUITE_P(Connecting, ModelStateTableTest,
                         testing::Values(Transition{connecting, Event::startWebSocket, connecting},
                                         Transition{connecting, Event::openFrame, connected},
                                         Transition{connecting, Event::heartbeat, connecting},
                                         Transition{connecting, Event::track, connecting},
                                         Transition{connecting, Event::closeFrame, waitingToReconnect, 0, 1},
                                         Transition{connecting, Event::receiveError, waitingToReconnect, 0,
                                                    1},
                                         Transition{connecting, Event::tick, connecting},
                                         Transition{connecting, Event::tickAfterSilence, connecting, 1, 1},
                                         Transition{connecting, Event::otherLiveStation, connecting, 1, 1},
                                         Transition{connecting, Event::stationWithoutFeed, idle, 0, 1}));
INSTANTIATE_TEST_SUITE_P(Connected, ModelStateTableTest,
                         testing::Values(Transition{connected, Event::startWebSocket, connected},
                                         Transition{connected, Event::openFrame, connected},
                                         Transition{connected, Event::heartbeat, connected},
                                         Transition{connected, Event::track, connected},
                                         Transition{connected, Event::joinSent, connected},
                                         Transition{connected, Event::closeFrame, waitingToReconnect, 0, 1},
                                         Transition{connected, Event::receiveError, waitingToReconnect, 0, 1},
                                         Transition{connected, Event::joinError, waitingToReconnect, 0, 1},
                                         Transition{connected, Event::tick, connected},
                                         Transition{connected, Event::tickAfterSilence, connecting, 1, 1},
                                         Transition{connected, Event::otherLiveStation, connecting, 1, 1},
                                         Transition{connected, Event::stationWithoutFeed, idle, 0, 1}));
INSTANTIATE_TEST_SUITE_P(WaitingToReconnect, ModelStateTableTest,
                         testing::Values(Transition{waitingToReconnect, Event::fiveSeconds, connecting, 1},
                                         Transition{waitingToReconnect, Event::startWebSocket, connecting, 1},
                                         Transition{waitingToReconnect, Event::otherLiveStation, connecting,
                                                    1},
                                         Transition{waitingToReconnect, Event::stationWithoutFeed, idle}));

class ModelReconnectTest : public ModelTest {};

TEST_F(ModelReconnectTest, ATickDoesNotOvertakeThePendingTimer) {
    start(RadioStation::zofra);
    queue.advance(14s);
    failSocket(u"x"_qs);
    queue.advance(1s);
    EXPECT_EQ(queue.elapsed(), 15s);
    EXPECT_EQ(state(), SocketState::waitingToReconnect);
    EXPECT_EQ(sockets.sockets.size(), 1U);
    queue.advance(4s);
    EXPECT_EQ(state(), SocketState::connecting);
}

TEST_F(ModelReconnectTest, IsTakenBackByAChangeToAStationWithoutAFeed) {
    start(RadioStation::zofra);
    failSocket(u"x"_qs);
    model->setStation(RadioStation::belRTL);
    queue.advance(60s);
    EXPECT_EQ(sockets.sockets.size(), 1U);
}

TEST_F(ModelReconnectTest, AnEarlierConnectTakesTheTimerBack) {
    start(RadioStation::zofra);
    failSocket(u"x"_qs);
    model->startWebSocket();
    EXPECT_FALSE(Probe::reconnectIsPending(*model));
    queue.advance(10s);
    EXPECT_EQ(sockets.sockets.size(), 2U);
}

TEST_F(ModelReconnectTest, GoesOnWithoutLimitAndWithoutBackOff) {
    start(RadioStation::zofra);
    for (std::size_t attempt = 1; attempt <= 50; ++attempt) {
        ASSERT_EQ(sockets.sockets.size(), attempt);
        failSocket(u"refused"_qs);
        queue.advance(5s);
    }
    EXPECT_EQ(output.lines.size(), 50U);
}

TEST_F(ModelReconnectTest, OneSocketOneTimerAtMostThroughAWildRide) {
    start(RadioStation::zofra);
    for (int i = 0; i < 40; ++i) {
        frame(u"o"_qs);
        if (i % 3 == 0)
            frame(u"c[]"_qs);
        else if (i % 3 == 1)
            failSocket(u"x"_qs);
        else
            model->setStation(i % 2 == 0 ? RadioStation::joe : RadioStation::zofra);
        queue.advance(5s);
        EXPECT_EQ(state(), SocketState::connecting);
        EXPECT_LE(queue.pendingTimers(), 2U);
    }
    for (std::size_t i = 0; i + 1 < sockets.sockets.size(); ++i)
        EXPECT_EQ(sockets.sockets[i]->cancels.size(), 1U);
}

} // namespace
} // namespace zofra::test
