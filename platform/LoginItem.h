// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

namespace zofra {

/// Starting the program when the user logs in. Main thread only.
class LoginItem {
public:
    virtual ~LoginItem() = default;
    /// The true state, read anew at each call.
    [[nodiscard]] virtual bool isEnabled() const = 0;
    /// Returns the failure's description, or nothing when it went well.
    [[nodiscard]] virtual std::optional<QString> registerItem() = 0;
    [[nodiscard]] virtual std::optional<QString> unregisterItem() = 0;
};

} // namespace zofra
