// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

namespace zofra {

/// Tells whether an owner still lives. A member of the owner, declared last so that it ends first. Owner and
/// guarded work must live on the same thread.
///
/// In the running program the long-lived objects end with the process and are never destroyed. Windows,
/// panels' connections and streams do end, and so does everything in tests. Work that was posted, or handed
/// to somebody else, is guarded by this and nothing else.
class Lifetime {
public:
    /// Can be kept by whoever outlives the owner.
    class Token {
    public:
        [[nodiscard]] bool isAlive() const { return !m_alive.expired(); }

    private:
        friend class Lifetime;
        explicit Token(const std::shared_ptr<char>& alive)
            : m_alive(alive) {}

        std::weak_ptr<char> m_alive;
    };

    [[nodiscard]] Token token() const { return Token(m_alive); }

    /// Wraps `work` so that it does nothing once this object has ended.
    template<typename Work>
    [[nodiscard]] auto guard(Work work) const {
        return [token = token(), work = std::move(work)](auto&&... arguments) mutable {
            if (token.isAlive())
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
