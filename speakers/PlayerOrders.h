// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/PlayerLocked.h"
#include "speakers/SonosSpeaker.h"
#include "speakers/SpeakerBackground.h"
#include "speakers/SpeakerControl.h"

#include <QHash>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <utility>

namespace zofra {

/// Orders to players, such that each player ends in the state that was asked for last, whatever time it takes
/// to answer. The orders of a start wait for the answers to all earlier orders to that player; Stop and Pause
/// go out at once. What is of no use any more is not sent: whatever is clicked, at most a few requests per
/// player are under way. Callable from any thread.
class PlayerOrders : public std::enable_shared_from_this<PlayerOrders> {
public:
    using Completion = SpeakerControl::Completion;
    using Send = std::function<void(const SpeakerControl&, Completion)>;
    enum class Effect { prepares, startsPlaying };

    explicit PlayerOrders(std::shared_ptr<SpeakerBackground> background)
        : m_background(std::move(background)) {}

    /// One step of a start. Once that is `superseded` the step is not sent any more and `then` not called.
    /// One that may have started the player is followed by Stop, unless a newer start waits for that player.
    void step(const SonosSpeaker& player, const std::stop_token& superseded, Effect effect, Send send,
              Completion then);
    void pause(const SonosSpeaker& player, Completion then) {
        sendAtOnce(&SpeakerControl::pause, player, std::move(then));
    }
    /// Does nothing while Stop is the last order to the player and has not been answered.
    void stop(const SonosSpeaker& player);
    /// Of several volumes for a player that has not answered yet only the last one is sent.
    void setVolume(const SonosSpeaker& player, int percent);

    /// Whether a player has been told to play and has not answered yet.
    [[nodiscard]] bool mayStillStart() const { return m_playsUnderWay > 0; }

private:
    struct Step {
        SonosSpeaker player;
        std::stop_token superseded;
        Effect effect;
        Send send;
        Completion then;
    };
    /// One player's orders.
    struct Lane {
        int underWay = 0;
        bool stopIsLast = false;
        std::deque<Step> waiting;
    };
    /// By the player's id; only of those with an order under way.
    struct Lanes {
        QHash<QString, Lane> transport;
        /// What is to be sent next, if anything.
        QHash<QString, std::optional<int>> volume;
    };

    [[nodiscard]] static std::optional<Step> takeNext(Lane& lane);
    void send(const Step& step);
    void ended(const Step& step, bool succeeded);
    /// An order to the player has been answered: gives the step whose turn it is.
    [[nodiscard]] std::optional<Step> leave(const QString& id);
    using AtOnce = void (SpeakerControl::*)(const SonosSpeaker&, Completion) const;
    void sendAtOnce(AtOnce order, const SonosSpeaker& player, Completion then);
    void sendStop(const SonosSpeaker& player) {
        sendAtOnce(&SpeakerControl::stop, player, [](bool) {});
    }
    void sendVolume(const SonosSpeaker& player, int percent);

    std::shared_ptr<SpeakerBackground> m_background;
    PlayerLocked<Lanes> m_lanes;
    std::atomic<int> m_playsUnderWay = 0;
};

} // namespace zofra
