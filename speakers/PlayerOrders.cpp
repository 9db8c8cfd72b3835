// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlayerOrders.h"

namespace zofra {

void PlayerOrders::step(const SonosSpeaker& player, const std::stop_token& superseded, Effect effect,
                        Send send, Completion then) {
    if (superseded.stop_requested())
        return;
    const auto next = m_lanes.with([&](Lanes& lanes) {
        auto& lane = lanes.transport[player.id];
        lane.waiting.push_back({player, superseded, effect, std::move(send), std::move(then)});
        return takeNext(lane);
    });
    if (next)
        this->send(*next);
}

std::optional<PlayerOrders::Step> PlayerOrders::takeNext(Lane& lane) {
    std::erase_if(lane.waiting, [](const Step& step) { return step.superseded.stop_requested(); });
    if (lane.waiting.empty() || lane.underWay > 0)
        return std::nullopt;
    auto step = std::move(lane.waiting.front());
    lane.waiting.pop_front();
    lane.underWay = 1;
    lane.stopIsLast = false;
    return step;
}

void PlayerOrders::send(const Step& step) {
    if (m_background->ended())
        return;
    m_playsUnderWay += step.effect == Effect::startsPlaying ? 1 : 0;
    step.send(SpeakerControl(m_background),
              [self = shared_from_this(), step](bool succeeded) { self->ended(step, succeeded); });
}

void PlayerOrders::ended(const Step& step, bool succeeded) {
    const bool isSuperseded = step.superseded.stop_requested();
    const auto next = leave(step.player.id);
    const bool isTakenOver = m_lanes.with(
        [&](Lanes& lanes) { return next || !lanes.transport.value(step.player.id).waiting.empty(); });
    if (!isSuperseded)
        step.then(succeeded && !m_background->ended());
    else if (step.effect == Effect::startsPlaying && !isTakenOver)
        sendStop(step.player);
    m_playsUnderWay -= step.effect == Effect::startsPlaying ? 1 : 0;
    if (next)
        send(*next);
}

std::optional<PlayerOrders::Step> PlayerOrders::leave(const QString& id) {
    return m_lanes.with([&](Lanes& lanes) {
        auto& lane = lanes.transport[id];
        --lane.underWay;
        auto next = takeNext(lane);
        if (lane.underWay == 0)
            lanes.transport.remove(id);
        return next;
    });
}

void PlayerOrders::sendAtOnce(AtOnce order, const SonosSpeaker& player, Completion then) {
    m_lanes.with([&](Lanes& lanes) {
        auto& lane = lanes.transport[player.id];
        ++lane.underWay;
        lane.stopIsLast = order == &SpeakerControl::stop;
    });
    auto answered = [self = shared_from_this(), id = player.id, then = std::move(then)](bool succeeded) {
        const auto next = self->leave(id);
        then(succeeded);
        if (next)
            self->send(*next);
    };
    (SpeakerControl(m_background).*order)(player, std::move(answered));
}

void PlayerOrders::stop(const SonosSpeaker& player) {
    const bool isStopping = m_lanes.with([&](Lanes& lanes) {
        const auto lane = lanes.transport.constFind(player.id);
        return lane != lanes.transport.constEnd() && lane->stopIsLast;
    });
    if (!isStopping)
        sendStop(player);
}

void PlayerOrders::setVolume(const SonosSpeaker& player, int percent) {
    const bool mustWait = m_lanes.with([&](Lanes& lanes) {
        const bool isUnderWay = lanes.volume.contains(player.id);
        lanes.volume.insert(player.id, isUnderWay ? std::optional(percent) : std::nullopt);
        return isUnderWay;
    });
    if (!mustWait)
        sendVolume(player, percent);
}

void PlayerOrders::sendVolume(const SonosSpeaker& player, int percent) {
    SpeakerControl(m_background).setVolume(player, percent, [self = shared_from_this(), player](bool) {
        const auto next = self->m_lanes.with([&](Lanes& lanes) {
            const auto waiting = lanes.volume.take(player.id);
            if (waiting)
                lanes.volume.insert(player.id, std::nullopt);
            return waiting;
        });
        if (next)
            self->sendVolume(player, *next);
    });
}

} // namespace zofra
