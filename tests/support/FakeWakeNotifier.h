// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/WakeNotifier.h"

#include <utility>

namespace zofra::test {

/// Wakes when the test says so.
class FakeWakeNotifier final : public WakeNotifier {
public:
    ObservationToken observeDidWake(std::function<void()> handler) override {
        return didWake.add(std::move(handler));
    }
    ObserverList<> didWake;
};

} // namespace zofra::test
