// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioObjects.h"
#include "app/RadioState.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"

#include <array>
#include <functional>
#include <optional>

namespace zofra {

/// Makes the state from the observed objects. However much changes in one turn of the main queue, the state
/// is made once, in the next, and told when it differs from what was told before. Main thread only.
class RadioStateSource {
public:
    /// Puts in what only the owner knows.
    using Complete = std::function<void(RadioState& state)>;

    /// The objects and the queue outlive the source.
    RadioStateSource(MainQueue& mainQueue, const RadioObjects& objects, Complete complete = {});

    /// As it is at this moment.
    [[nodiscard]] RadioState now() const;
    /// Calls `handler` in the turn after a change until the token ends.
    [[nodiscard]] ObservationToken observe(std::function<void(const RadioState& state)> handler) {
        return m_observers.add(std::move(handler));
    }
    /// What the owner puts in may have changed.
    void touch();

private:
    void tell();

    MainQueue& m_mainQueue;
    RadioObjects m_objects;
    Complete m_complete;
    std::optional<RadioState> m_told;
    bool m_isPosted = false;
    ObserverList<const RadioState&> m_observers;
    std::array<ObservationToken, 4> m_tokens;
    Lifetime m_lifetime;
};

} // namespace zofra
