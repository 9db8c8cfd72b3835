// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace zofra {

/// Keeps an observation alive; destroying it ends the observation at once.
using ObservationToken = std::shared_ptr<void>;

/// A list of observers of one thing. Main thread only. Observers may come and go while they are being told.
template<typename... Arguments>
class ObserverList {
public:
    using Handler = std::function<void(Arguments...)>;

    /// Adds an observer until the returned token ends. The token may outlive the list.
    [[nodiscard]] ObservationToken add(Handler handler) {
        std::erase_if(m_handlers, [](const auto& weak) { return weak.expired(); });
        auto token = std::make_shared<Handler>(std::move(handler));
        m_handlers.push_back(token);
        return token;
    }

    /// Tells every observer, in the order in which they came.
    void notify(Arguments... arguments) const {
        const auto snapshot = m_handlers;
        for (const auto& weak : snapshot) {
            const auto handler = weak.lock();
            if (handler && *handler)
                (*handler)(arguments...);
        }
    }

private:
    std::vector<std::weak_ptr<Handler>> m_handlers;
};

/// An object whose published fields can be watched, before and after they change. Main thread only.
class Observable {
public:
    /// Calls `willChange` before each change of a published field until the token ends.
    [[nodiscard]] ObservationToken observe(std::function<void()> willChange) {
        return m_beforeChange.add(std::move(willChange));
    }
    /// Calls `didChange` after each change of a published field until the token ends.
    [[nodiscard]] ObservationToken observeChanged(std::function<void()> didChange) {
        return m_afterChange.add(std::move(didChange));
    }

    Observable() = default;
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

protected:
    ~Observable() = default;

private:
    template<typename>
    friend class Published;
    ObserverList<> m_beforeChange;
    ObserverList<> m_afterChange;
};

/// A field of an Observable: every assignment is announced before and after, also of an equal value.
template<typename Value>
class Published {
public:
    Published(Observable& owner, Value value)
        : m_owner(owner)
        , m_value(std::move(value)) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    Published& operator=(Value value) {
        m_owner.m_beforeChange.notify();
        m_value = std::move(value);
        m_owner.m_afterChange.notify();
        return *this;
    }
    [[nodiscard]] const Value& get() const { return m_value; }
    /// A published field reads like the plain one.
    operator const Value&() const { return m_value; }

private:
    Observable& m_owner;
    Value m_value;
};

} // namespace zofra
