// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/AudioEngine.h"

#include <utility>

namespace zofra {

namespace {

constexpr std::chrono::minutes leastBetweenReports{1};

} // namespace

AudioEngine::AudioEngine(MainQueue& queue, SystemLog& log, ReconnectPacing::SteadyClock clock,
                         ReconnectPacing::RandomFraction random, AudioCoreMaker makeCore)
    : mainQueue(queue)
    , pacing(clock, std::move(random))
    , m_log(log)
    , m_clock(std::move(clock))
    , m_makeCore(std::move(makeCore)) {}

std::unique_ptr<AudioCore> AudioEngine::takeCore() {
    if (m_spare)
        return std::move(m_spare);
    return m_makeCore([this](const QString& reason) { report(reason); });
}

void AudioEngine::giveBack(std::unique_ptr<AudioCore> core) {
    core->stop();
    if (!m_spare)
        m_spare = std::move(core);
}

void AudioEngine::tryNow() {
    pacing.tryNow();
    waitIsOver.notify();
}

void AudioEngine::report(const QString& reason) {
    const auto earlier = m_reports.constFind(reason);
    if (earlier != m_reports.cend() && (!earlier->isNews || m_clock() - earlier->at < leastBetweenReports))
        return;
    m_reports.insert(reason, {m_clock(), false});
    m_log.log(reason);
}

void AudioEngine::worksAgain() {
    for (auto& report : m_reports)
        report.isNews = true;
}

} // namespace zofra
