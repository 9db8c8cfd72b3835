// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/PlayerLocked.h"

#include <QtGlobal>

#include <functional>
#include <utility>

namespace zofra {

/// Requests that belong together: counts those under way and those that succeeded, and tells once nothing is
/// under way any more. Callable from any thread.
class CompletionGroup {
public:
    /// `finished` is called once, on the thread of the last to leave.
    explicit CompletionGroup(std::function<void(qsizetype succeeded)> finished)
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

} // namespace zofra
