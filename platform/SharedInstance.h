// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace zofra {

/// The one object of a class that the running program has: made when it is first asked for, from any thread,
/// in the way that the program has laid down before, and never destroyed.
template<typename Type>
class SharedInstance {
public:
    using Make = std::function<std::unique_ptr<Type>()>;

    /// Before anybody asks.
    static void setMake(Make make) { s_make = std::move(make); }
    [[nodiscard]] static Type& get() {
        static Type* const instance = s_make().release();
        return *instance;
    }

private:
    static inline Make s_make;
};

} // namespace zofra
