// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Check.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace zofra::doctor {

/// All checks at once, for a limited time. Main thread only.
class Examination {
public:
    using Finished = std::function<void(Findings)>;

    Examination(MainQueue& mainQueue, std::vector<std::unique_ptr<Check>> checks);

    /// Calls `finished` once, with what was found in the order of the checks: when all are done, or when
    /// `limit` has passed. Once.
    void run(std::chrono::milliseconds limit, Finished finished);

private:
    void finish();

    MainQueue& m_mainQueue;
    std::vector<std::unique_ptr<Check>> m_checks;
    /// Of each check, once it is done.
    std::vector<std::optional<Findings>> m_found;
    std::size_t m_left = 0;
    std::unique_ptr<Timer> m_limit;
    Finished m_finished;
};

} // namespace zofra::doctor
