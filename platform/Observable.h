// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <utility>

namespace zofra {

/// Keeps an observation alive; destroying it ends the observation at once.
class Observation {
public:
    virtual ~Observation() = default;
};
using ObservationToken = std::unique_ptr<Observation>;

/// A list of observers of one thing. Main thread only. Observers may come and go while they are being told.
template<typename... Arguments>
class ObserverList {
public:
    using Handler = std::function<void(Arguments...)>;

    /// Adds an observer until the returned token ends. The token may outlive the list.
    [[nodiscard]] ObservationToken add(Handler handler) {
        auto entry = std::make_shared<Handler>(std::move(handler));
        m_entries->push_back(entry);
        return std::make_unique<Entry>(m_entries, std::move(entry));
    }

    /// Tells every observer, in the order in which they came.
    void notify(Arguments... arguments) const {
        const auto snapshot = *m_entries;
        for (const auto& weak : snapshot) {
            const auto handler = weak.lock();
            if (handler && *handler)
                (*handler)(arguments...);
        }
    }

private:
    using Entries = std::list<std::weak_ptr<Handler>>;
    class Entry final : public Observation {
    public:
        Entry(std::shared_ptr<Entries> entries, std::shared_ptr<Handler> handler)
            : m_entries(std::move(entries))
            , m_handler(std::move(handler)) {}
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;
        ~Entry() override {
            m_handler.reset();
            m_entries->remove_if([](const auto& weak) { return weak.expired(); });
        }

    private:
        std::shared_ptr<Entries> m_entries;
        std::shared_ptr<Handler> m_handler;
    };

    std::shared_ptr<Entries> m_entries = std::make_shared<Entries>();
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
    // NOLINTNEXTLINE(google-explicit-constructor): a published field reads like the plain one.
    operator const Value&() const { return m_value; }

private:
    Observable& m_owner;
    Value m_value;
};

} // namespace zofra
