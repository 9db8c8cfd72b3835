// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "platform/SystemLog.h"
#include "platform/linux/audio/AudioCore.h"
#include "platform/linux/audio/ReconnectPacing.h"

#include <QHash>

#include <memory>
#include <utility>

namespace zofra {

/// What all stream players share: the cores, of which one is kept for the next player, and the pacing of
/// addresses. Main thread only.
class AudioEngine {
public:
    /// Queue and log outlive the engine.
    AudioEngine(MainQueue& queue, SystemLog& log, ReconnectPacing::SteadyClock clock,
                ReconnectPacing::RandomFraction random, AudioCoreMaker makeCore)
        : mainQueue(queue)
        , pacing(clock, std::move(random))
        , m_log(log)
        , m_clock(std::move(clock))
        , m_makeCore(std::move(makeCore)) {}

    /// A core that nobody else uses.
    [[nodiscard]] std::unique_ptr<AudioCore> takeCore() {
        if (m_spare)
            return std::move(m_spare);
        return m_makeCore([this](const QString& reason) { report(reason); });
    }
    /// Silences it at once and keeps it for the next.
    void giveBack(std::unique_ptr<AudioCore> core) {
        core->stop();
        if (!m_spare)
            m_spare = std::move(core);
    }

    /// The network has changed or the computer has woken: every player that waits opens its stream at once.
    void tryNow() {
        pacing.tryNow();
        waitIsOver.notify();
    }

    /// Writes `reason` to the system's log, once until `worksAgain` and at most once a minute: neither a
    /// fault that lasts nor one that comes and goes fills it.
    void report(const QString& reason) {
        const auto earlier = m_reports.constFind(reason);
        if (earlier != m_reports.cend() &&
            (!earlier->isNews || m_clock() - earlier->at < leastBetweenReports))
            return;
        m_reports.insert(reason, {m_clock(), false});
        m_log.log(reason);
    }
    /// A stream sounds: the next fault is news again.
    void worksAgain() {
        for (auto& report : m_reports)
            report.isNews = true;
    }

    [[nodiscard]] ReconnectPacing::Milliseconds now() const { return m_clock(); }

    MainQueue& mainQueue;
    ReconnectPacing pacing;
    /// Told when whoever waits should wait no longer.
    ObserverList<> waitIsOver;

private:
    static constexpr std::chrono::minutes leastBetweenReports{1};

    SystemLog& m_log;
    ReconnectPacing::SteadyClock m_clock;
    AudioCoreMaker m_makeCore;
    std::unique_ptr<AudioCore> m_spare;
    struct Report {
        ReconnectPacing::Milliseconds at{0};
        bool isNews = false;
    };
    QHash<QString, Report> m_reports;
};

} // namespace zofra
