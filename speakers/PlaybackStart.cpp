// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlaybackStart.h"

#include "speakers/SpeakerControl.h"

#include <utility>

namespace zofra {

namespace {

/// Counts what is under way and what went well, and tells once nothing is under way any more.
class Tally {
public:
    explicit Tally(std::function<void(qsizetype succeeded)> finished)
        : m_finished(std::move(finished)) {}

    void enter() {
        m_counts.with([](Counts& counts) { ++counts.entered; });
    }
    void succeed() {
        m_counts.with([](Counts& counts) { ++counts.succeeded; });
    }
    void leave() {
        const auto counts = m_counts.with([](Counts& now) {
            --now.entered;
            return now;
        });
        if (counts.entered == 0)
            m_finished(counts.succeeded);
    }

private:
    struct Counts {
        qsizetype entered = 0;
        qsizetype succeeded = 0;
    };
    PlayerLocked<Counts> m_counts;
    std::function<void(qsizetype)> m_finished;
};

/// The chain of one group; each step runs in the completion of the one before.
class GroupStart : public std::enable_shared_from_this<GroupStart> {
public:
    GroupStart(std::weak_ptr<SpeakerBackground> background, PlayerPlaybackGroup group, QString streamUri,
               std::shared_ptr<Tally> tally)
        : m_background(std::move(background))
        , m_group(std::move(group))
        , m_streamUri(std::move(streamUri))
        , m_tally(std::move(tally)) {}

    void detach() {
        step(
            [](const GroupStart& self, const SpeakerControl& control, SpeakerControl::Completion then) {
                control.detachIfGrouped(self.m_group.leader, std::move(then));
            },
            &GroupStart::setStream);
    }

private:
    using Next = void (GroupStart::*)();

    /// Does one thing and goes on when it succeeded; the group has failed when it did not, or when the
    /// manager is gone.
    template<typename Action>
    void step(Action action, Next next) {
        const auto background = m_background.lock();
        if (!background || background->ended()) {
            m_tally->leave();
            return;
        }
        action(*this, SpeakerControl(background), [self = shared_from_this(), next](bool succeeded) {
            if (succeeded)
                (*self.*next)();
            else
                self->m_tally->leave();
        });
    }

    void setStream() {
        step(
            [](const GroupStart& self, const SpeakerControl& control, SpeakerControl::Completion then) {
                control.setAVTransportURI(transportEndpoint(self.m_group.leader), self.m_streamUri,
                                          std::move(then));
            },
            &GroupStart::play);
    }

    void play() {
        step([](const GroupStart& self, const SpeakerControl& control,
                SpeakerControl::Completion then) { control.play(self.m_group.leader, std::move(then)); },
             &GroupStart::joinFollowers);
    }

    void joinFollowers() {
        m_tally->succeed();
        if (const auto background = m_background.lock(); background && !background->ended()) {
            for (const auto& follower : std::as_const(m_group.followers)) {
                m_tally->enter();
                SpeakerControl(background).join(follower, m_group.leader, [tally = m_tally](bool) {
                    tally->leave();
                });
            }
        }
        m_tally->leave();
    }

    std::weak_ptr<SpeakerBackground> m_background;
    PlayerPlaybackGroup m_group;
    QString m_streamUri;
    std::shared_ptr<Tally> m_tally;
};

} // namespace

void startPlayback(const std::shared_ptr<SpeakerBackground>& background,
                   const QList<PlayerPlaybackGroup>& groups, const QString& streamUri,
                   std::function<void(qsizetype started)> finished) {
    const auto tally = std::make_shared<Tally>(std::move(finished));
    tally->enter();
    for (const auto& group : groups) {
        tally->enter();
        std::make_shared<GroupStart>(background, group, streamUri, tally)->detach();
    }
    tally->leave();
}

void pausePlayers(const std::shared_ptr<SpeakerBackground>& background, const QList<SonosSpeaker>& speakers,
                  std::function<void(bool succeeded)> finished) {
    const auto tally = std::make_shared<Tally>(
        [finished = std::move(finished)](qsizetype succeeded) { finished(succeeded > 0); });
    tally->enter();
    for (const auto& speaker : speakers) {
        tally->enter();
        SpeakerControl(background).pause(speaker, [tally](bool succeeded) {
            if (succeeded)
                tally->succeed();
            tally->leave();
        });
    }
    tally->leave();
}

} // namespace zofra
