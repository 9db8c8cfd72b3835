// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/GroupPlayback.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace zofra {

namespace {

/// Requests that belong together: counts those under way and those that succeeded, and tells once nothing is
/// under way any more, on the thread of the last to leave. Callable from any thread.
class CompletionGroup {
public:
    explicit CompletionGroup(std::function<void(qsizetype succeeded)> finished)
        : m_finished(std::move(finished)) {}

    void enter() { ++m_entered; }
    void succeed() { ++m_succeeded; }
    void leave() {
        if (--m_entered == 0)
            m_finished(m_succeeded);
    }

private:
    std::atomic<qsizetype> m_entered = 0;
    std::atomic<qsizetype> m_succeeded = 0;
    std::function<void(qsizetype)> m_finished;
};

/// The chain of one group; each step runs in the completion of the one before.
class GroupStart : public std::enable_shared_from_this<GroupStart> {
public:
    /// `orders` runs the steps, and outlives each.
    GroupStart(PlayerOrders& orders, PlayerPlaybackGroup group, QString streamUri, std::stop_token superseded,
               std::shared_ptr<CompletionGroup> all)
        : m_orders(orders)
        , m_group(std::move(group))
        , m_streamUri(std::move(streamUri))
        , m_superseded(std::move(superseded))
        , m_all(std::move(all)) {}

    void detach() {
        step([leader = m_group.leader](const SpeakerControl& control,
                                       auto then) { control.detachIfGrouped(leader, std::move(then)); },
             &GroupStart::setStream);
    }

private:
    using Next = void (GroupStart::*)();

    /// Does one thing and goes on when it succeeded; the group has failed when it did not.
    void step(PlayerOrders::Send send, Next next,
              PlayerOrders::Effect effect = PlayerOrders::Effect::prepares) {
        m_orders.step(m_group.leader, m_superseded, effect, std::move(send),
                      [self = shared_from_this(), next](bool succeeded) {
                          if (succeeded)
                              (*self.*next)();
                          else
                              self->m_all->leave();
                      });
    }

    void setStream() {
        step(
            [leader = m_group.leader, uri = m_streamUri](const SpeakerControl& control, auto then) {
                control.setAVTransportURI(transportEndpoint(leader), uri, std::move(then));
            },
            &GroupStart::play);
    }

    void play() {
        step([leader = m_group.leader](const SpeakerControl& control,
                                       auto then) { control.play(leader, std::move(then)); },
             &GroupStart::joinFollowers, PlayerOrders::Effect::startsPlaying);
    }

    void joinFollowers() {
        m_all->succeed();
        for (const auto& follower : std::as_const(m_group.followers)) {
            m_all->enter();
            m_orders.step(
                follower, m_superseded, PlayerOrders::Effect::prepares,
                [follower, leader = m_group.leader](const SpeakerControl& control, auto then) {
                    control.join(follower, leader, std::move(then));
                },
                [all = m_all](bool) { all->leave(); });
        }
        m_all->leave();
    }

    PlayerOrders& m_orders;
    PlayerPlaybackGroup m_group;
    QString m_streamUri;
    std::stop_token m_superseded;
    std::shared_ptr<CompletionGroup> m_all;
};

/// Both, of two records of one player the one among `players`.
QList<SonosSpeaker> together(QList<SonosSpeaker> players, const QList<SonosSpeaker>& others) {
    for (const auto& other : others) {
        if (std::ranges::find(players, other.id, &SonosSpeaker::id) == players.end())
            players.append(other);
    }
    return players;
}

} // namespace

GroupPlayback::GroupPlayback(std::shared_ptr<SpeakerBackground> background)
    : m_background(std::move(background))
    , m_orders(std::make_shared<PlayerOrders>(m_background)) {}

std::stop_token GroupPlayback::supersede(Act next) {
    m_current.request_stop();
    m_current = {};
    m_act = next;
    return m_current.get_token();
}

std::function<void(qsizetype)> GroupPlayback::later(const std::stop_token& superseded,
                                                    std::function<void(qsizetype)> finished) {
    return
        [this, background = m_background, superseded, finished = std::move(finished)](qsizetype succeeded) {
            background->post([this, superseded, finished, succeeded] {
                if (superseded.stop_requested())
                    return;
                m_act = Act::none;
                finished(succeeded);
            });
        };
}

void GroupPlayback::play(const QList<PlayerPlaybackGroup>& groups, const QString& streamUri,
                         std::function<void(qsizetype started)> finished) {
    const auto superseded = supersede(Act::starting);
    m_leaders.clear();
    for (const auto& group : groups)
        m_leaders.append(group.leader);
    m_started = together(m_leaders, m_started);
    const auto all = std::make_shared<CompletionGroup>(later(superseded, std::move(finished)));
    all->enter();
    for (const auto& group : groups) {
        all->enter();
        std::make_shared<GroupStart>(*m_orders, group, streamUri, superseded, all)->detach();
    }
    all->leave();
}

void GroupPlayback::pause(const QList<SonosSpeaker>& players, std::function<void(bool succeeded)> finished) {
    if (m_act == Act::pausing && players == m_paused)
        return;
    const auto superseded = supersede(Act::pausing);
    m_paused = players;
    const auto all = std::make_shared<CompletionGroup>(
        later(superseded, [finished = std::move(finished)](qsizetype paused) { finished(paused > 0); }));
    all->enter();
    for (const auto& player : players) {
        all->enter();
        m_orders->pause(player, [all](bool succeeded) {
            if (succeeded)
                all->succeed();
            all->leave();
        });
    }
    all->leave();
}

void GroupPlayback::stop(const QList<SonosSpeaker>& players) {
    supersede(Act::none);
    const auto all = together(players, std::exchange(m_started, {}));
    for (const auto& player : all)
        m_orders->stop(player);
}

void GroupPlayback::setVolume(const QList<SonosSpeaker>& players, int percent) {
    for (const auto& player : players)
        m_orders->setVolume(player, percent);
}

} // namespace zofra
