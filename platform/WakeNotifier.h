// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Observable.h"

#include <functional>

namespace zofra {

/// Tells when the computer has woken from sleep. Main thread only.
class WakeNotifier {
public:
    virtual ~WakeNotifier() = default;
    [[nodiscard]] virtual ObservationToken observeDidWake(std::function<void()> handler) = 0;
};

} // namespace zofra
