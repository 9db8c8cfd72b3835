// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/NetworkPlayerProtocol.h"
#include "speakers/PlayerOrders.h"
#include "speakers/SpeakerBackground.h"

#include <functional>
#include <memory>
#include <stop_token>

namespace zofra {

/// Starts, pauses and stops players. Each of the three supersedes what went before it: a start that has not
/// ended yet goes no further, and its outcome is not told. Main thread only.
class GroupPlayback {
public:
    explicit GroupPlayback(std::shared_ptr<SpeakerBackground> background);

    /// Gives a stream to several groups of players, all at once. In each group the leader leaves whatever
    /// group it is in, is given the stream and told to play; then the others join it. `finished` is told the
    /// number of groups whose leader plays, in a later turn of the main queue, unless superseded.
    void play(const QList<PlayerPlaybackGroup>& groups, const QString& streamUri,
              std::function<void(qsizetype started)> finished);
    /// Tells players to pause. `finished` is told, in a later turn of the main queue unless superseded,
    /// whether any of them did. There must be at least one. Does nothing while they are being paused already.
    void pause(const QList<SonosSpeaker>& players, std::function<void(bool succeeded)> finished);
    /// Stops these players, and besides every player started since the last stop.
    void stop(const QList<SonosSpeaker>& players);
    /// Clamped to 0...100.
    void setVolume(const QList<SonosSpeaker>& players, int percent);

    /// Whether a start has not ended yet.
    [[nodiscard]] bool isStarting() const { return m_act == Act::starting; }
    /// Whether a player has been told to play and has not answered yet, be it of a start that was given up.
    [[nodiscard]] bool mayStillStart() const { return m_orders->mayStillStart(); }
    /// Whom the last start gave the stream to.
    [[nodiscard]] const QList<SonosSpeaker>& leaders() const { return m_leaders; }

private:
    enum class Act { none, starting, pausing };

    /// Ends what is under way. Gives the token of what comes next.
    std::stop_token supersede(Act next);
    /// Runs `finished` on the main thread, unless superseded by then.
    [[nodiscard]] std::function<void(qsizetype)> later(const std::stop_token& superseded,
                                                       std::function<void(qsizetype)> finished);

    std::shared_ptr<SpeakerBackground> m_background;
    std::shared_ptr<PlayerOrders> m_orders;
    std::stop_source m_current;
    Act m_act = Act::none;
    QList<SonosSpeaker> m_paused;
    QList<SonosSpeaker> m_leaders;
    /// Every leader since the last stop.
    QList<SonosSpeaker> m_started;
};

} // namespace zofra
