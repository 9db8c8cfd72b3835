// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <mutex>
#include <utility>

namespace zofra {

/// A value shared between threads: every read and every change happens under its lock. Shared by reference,
/// hence never copied; hold it by shared_ptr where it outlives its maker.
template<typename Value>
class PlayerLocked {
public:
    explicit PlayerLocked(Value value = Value())
        : m_stored(std::move(value)) {}
    PlayerLocked(const PlayerLocked&) = delete;
    PlayerLocked& operator=(const PlayerLocked&) = delete;

    /// A copy of the value.
    [[nodiscard]] Value value() const {
        const std::scoped_lock lock(m_lock);
        return m_stored;
    }
    /// Replaces the value.
    void set(Value value) {
        const std::scoped_lock lock(m_lock);
        m_stored = std::move(value);
    }
    /// Runs `change` on the value under the lock and answers what it answers. It must be brief.
    template<typename Change>
    auto with(Change change) {
        const std::scoped_lock lock(m_lock);
        return change(m_stored);
    }

private:
    mutable std::mutex m_lock;
    Value m_stored;
};

} // namespace zofra
