// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

namespace zofra {

/// Lets work that was posted to the owner's thread notice that the owner is gone. A member of the owner,
/// declared last so that it ends first; owner and guarded work must live on the same thread.
class Lifetime {
public:
    /// Wraps `work` so that it does nothing once this object has ended.
    template<typename Work>
    [[nodiscard]] auto guard(Work work) const {
        return [alive = std::weak_ptr<char>(m_alive), work = std::move(work)](auto&&... arguments) mutable {
            if (!alive.expired())
                work(std::forward<decltype(arguments)>(arguments)...);
        };
    }

    Lifetime() = default;
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;

private:
    std::shared_ptr<char> m_alive = std::make_shared<char>();
};

} // namespace zofra
