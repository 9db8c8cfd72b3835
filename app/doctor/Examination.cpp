// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/Examination.h"

#include <utility>

namespace zofra::doctor {

Examination::Examination(MainQueue& mainQueue, std::vector<std::unique_ptr<Check>> checks)
    : m_mainQueue(mainQueue)
    , m_checks(std::move(checks))
    , m_found(m_checks.size())
    , m_left(m_checks.size()) {}

void Examination::run(std::chrono::milliseconds limit, Finished finished) {
    m_finished = std::move(finished);
    m_limit = m_mainQueue.startTimer(limit, MainQueue::Repeat::once, [this] { finish(); });
    for (std::size_t i = 0; i < m_checks.size(); ++i) {
        m_checks[i]->start([this, i](Findings found) {
            m_found[i] = std::move(found);
            if (--m_left == 0)
                finish();
        });
    }
}

void Examination::finish() {
    // A check that is late finds nobody to tell.
    const auto finished = std::exchange(m_finished, nullptr);
    if (!finished)
        return;
    Findings all;
    for (std::size_t i = 0; i < m_checks.size(); ++i) {
        const Findings found = m_found[i] ? *m_found[i] : m_checks[i]->soFar();
        all.insert(all.end(), found.begin(), found.end());
    }
    finished(std::move(all));
}

} // namespace zofra::doctor
