// SPDX-License-Identifier: GPL-3.0-or-later
// The model may end at any moment; what is still under way must not notice.
#include "tests/metadata/ModelTest.h"

namespace zofra::test {
namespace {

class ModelLifetimeTest : public ModelTest {};

TEST_F(ModelLifetimeTest, EndsItsTimersAndLetsGoOfTheSocket) {
    startConnected(RadioStation::zofra);
    const std::weak_ptr<FakeMetadataSocket> socket = sockets.sockets.back();
    sockets.sockets.clear();
    ASSERT_FALSE(socket.expired());
    EXPECT_EQ(queue.pendingTimers(), 1U);
    model.reset();
    EXPECT_TRUE(socket.expired());
    EXPECT_EQ(queue.pendingTimers(), 0U);
    const auto requests = http.requests.size();
    queue.advance(60s);
    EXPECT_EQ(http.requests.size(), requests);
}

TEST_F(ModelLifetimeTest, EndsAPendingReconnect) {
    start(RadioStation::zofra);
    failSocket(u"x"_qs);
    EXPECT_EQ(queue.pendingTimers(), 2U);
    model.reset();
    EXPECT_EQ(queue.pendingTimers(), 0U);
    queue.advance(60s);
    EXPECT_EQ(sockets.sockets.size(), 1U);
}

TEST_F(ModelLifetimeTest, AWaitingReceiveDoesNotKeepTheSocketAlive) {
    start(RadioStation::zofra);
    const std::weak_ptr<FakeMetadataSocket> socket = sockets.sockets.back();
    sockets.sockets.clear();
    model->setStation(RadioStation::belRTL);
    EXPECT_TRUE(socket.expired()) << "its handler must not hold it";
}

TEST_F(ModelLifetimeTest, LateSocketResultsDoNothing) {
    startConnected(RadioStation::zofra);
    const auto socket = sockets.sockets.back();
    model.reset();
    socket->deliver(trackFrame(u"zofra_be"_qs, u"Late"_qs));
    socket->finishSend(failure(u"late"_qs));
    queue.advance(60s);
    EXPECT_TRUE(updates.empty());
    EXPECT_TRUE(output.lines.empty());
    EXPECT_EQ(sockets.sockets.size(), 1U);
}

TEST_F(ModelLifetimeTest, ResultsAlreadyPostedDoNothing) {
    startConnected(RadioStation::zofra);
    sockets.last().fail(u"late"_qs);
    http.answer(200, onAir(u"5067"_qs, u"Late"_qs));
    ASSERT_EQ(queue.pendingWork(), 2U);
    model.reset();
    queue.advance(60s);
    EXPECT_TRUE(updates.empty());
    EXPECT_TRUE(output.lines.empty());
}

TEST_F(ModelLifetimeTest, LateAnswersDoNothing) {
    start(RadioStation::zofra);
    model->fetchMetadata();
    model.reset();
    http.answer(200, onAir(u"5067"_qs, u"Late"_qs));
    http.fail(HttpError{});
    queue.advance(60s);
    EXPECT_TRUE(updates.empty());
    EXPECT_EQ(http.requests.size(), 2U);
}

TEST_F(ModelLifetimeTest, AScheduledRetryDoesNothing) {
    start(RadioStation::belRTL);
    failRequest();
    model.reset();
    queue.advance(60s);
    EXPECT_EQ(http.requests.size(), 1U);
}

TEST_F(ModelLifetimeTest, MayEndWhileTellingALiveTrack) {
    startConnected(RadioStation::zofra);
    model->onUpdate = [this](const QString&, const std::optional<QString>&) { model.reset(); };
    frame(trackFrame(u"zofra_be"_qs, u"Song"_qs));
    EXPECT_EQ(model, nullptr);
    EXPECT_TRUE(sockets.last().receivers.empty());
}

TEST_F(ModelLifetimeTest, MayEndWhileTellingAnAnswer) {
    start(RadioStation::belRTL);
    model->onUpdate = [this](const QString&, const std::optional<QString>&) { model.reset(); };
    answer(200, onAir(u"6"_qs, u"Song"_qs));
    EXPECT_EQ(model, nullptr);
}

TEST_F(ModelLifetimeTest, MayEndWhileTellingAStation) {
    start(RadioStation::zofra);
    model->onUpdate = [this](const QString&, const std::optional<QString>&) { model.reset(); };
    model->setStation(RadioStation::joe);
    EXPECT_EQ(model, nullptr);
    EXPECT_EQ(sockets.sockets.size(), 1U) << "nothing is started any more";
}

TEST_F(ModelLifetimeTest, AListenerMaySwitchStationsWhileBeingToldATrack) {
    startConnected(RadioStation::zofra);
    model->onUpdate = [this](const QString&, const std::optional<QString>&) {
        model->onUpdate = nullptr;
        model->setStation(RadioStation::joe);
    };
    frame(trackFrame(u"zofra_be"_qs, u"Song"_qs));
    EXPECT_EQ(model->currentStation.get(), RadioStation::joe);
    EXPECT_EQ(state(), SocketState::connecting);
    EXPECT_TRUE(sockets.sockets[0]->receivers.empty()) << "the old socket is not listened to again";
    EXPECT_EQ(sockets.sockets[1]->receivers.size(), 1U) << "and the new one only once";
}

} // namespace
} // namespace zofra::test
