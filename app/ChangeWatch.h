// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"

#include <functional>
#include <vector>

namespace zofra {

/// Watches several observable objects and tells once per turn of the main queue that something may have
/// changed, however much it was. Main thread only.
class ChangeWatch {
public:
    ChangeWatch(MainQueue& mainQueue, const std::vector<Observable*>& watched);

    /// Calls `handler` in a turn after each change until the token ends.
    [[nodiscard]] ObservationToken observe(std::function<void()> handler) {
        return m_observers.add(std::move(handler));
    }
    /// Something that is not watched may have changed.
    void touch();

private:
    MainQueue& m_mainQueue;
    bool m_isPosted = false;
    ObserverList<> m_observers;
    std::vector<ObservationToken> m_tokens;
    Lifetime m_lifetime;
};

} // namespace zofra
