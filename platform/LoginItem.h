// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

namespace zofra {

/// Starting the program when the user logs in. Main thread only.
class LoginItem {
public:
    virtual ~LoginItem() = default;
    /// The true state, read anew at each call.
    [[nodiscard]] virtual bool isEnabled() const = 0;
    [[nodiscard]] virtual Result<void> registerItem() = 0;
    [[nodiscard]] virtual Result<void> unregisterItem() = 0;
};

} // namespace zofra
