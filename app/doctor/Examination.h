// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Check.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace zofra::doctor {

/// All checks at once, for a limited time. Main thread only.
class Examination {
public:
    using Finished = std::function<void(Findings)>;

    Examination(MainQueue& mainQueue, std::vector<std::unique_ptr<Check>> checks)
        : m_mainQueue(mainQueue)
        , m_checks(std::move(checks))
        , m_found(m_checks.size())
        , m_left(m_checks.size()) {}

    /// Calls `finished` once, in the order of the checks: when all are done, or `limit` has passed. Once.
    void run(std::chrono::milliseconds limit, Finished finished) {
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

private:
    void finish() {
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

    MainQueue& m_mainQueue;
    std::vector<std::unique_ptr<Check>> m_checks;
    /// Of each check, once it is done.
    std::vector<std::optional<Findings>> m_found;
    std::size_t m_left = 0;
    std::unique_ptr<Timer> m_limit;
    Finished m_finished;
};

} // namespace zofra::doctor
