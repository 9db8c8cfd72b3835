// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/StreamPlayer.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace zofra::test {

class FakeStreamPlayer;

/// Makes players that do nothing but remember. Keeps one record, in order, of everything asked of any of
/// them; the players are numbered from 1.
class FakeStreamPlayerFactory final : public StreamPlayerFactory {
public:
    std::unique_ptr<StreamPlayer> makePlayer(std::shared_ptr<StreamItem> item) override;

    /// The addresses of the players made, in order.
    [[nodiscard]] std::vector<QUrl> urls() const {
        std::vector<QUrl> result;
        for (const auto& item : items)
            result.push_back(item->url);
        return result;
    }
    /// The latest player that still exists, null if none does.
    [[nodiscard]] FakeStreamPlayer* current() const { return alive.empty() ? nullptr : alive.back(); }
    /// The latest item.
    [[nodiscard]] const std::shared_ptr<StreamItem>& item() const { return items.back(); }

    QStringList calls;
    /// Called at each of them.
    std::function<void()> onCall;
    std::vector<FakeStreamPlayer*> alive;
    std::vector<std::shared_ptr<StreamItem>> items;
    int made = 0;
};

/// A player whose status the test sets.
class FakeStreamPlayer final : public StreamPlayer {
public:
    FakeStreamPlayer(FakeStreamPlayerFactory& factory, std::shared_ptr<StreamItem> item)
        : m_factory(factory)
        , m_number(++factory.made)
        , m_item(std::move(item)) {
        factory.items.push_back(m_item);
        factory.alive.push_back(this);
        record(QStringLiteral("made for %1").arg(m_item->url.path()));
    }
    FakeStreamPlayer(const FakeStreamPlayer&) = delete;
    FakeStreamPlayer& operator=(const FakeStreamPlayer&) = delete;
    ~FakeStreamPlayer() override {
        std::erase(m_factory.alive, this);
        record(QStringLiteral("dropped"));
    }

    void play() override {
        record(QStringLiteral("play"));
        wanted = true;
        if (m_status == TimeControlStatus::paused)
            setStatus(TimeControlStatus::waitingToPlayAtSpecifiedRate);
    }
    void pause() override {
        record(QStringLiteral("pause"));
        wanted = false;
        setStatus(TimeControlStatus::paused);
    }
    void setVolume(float value) override {
        record(QStringLiteral("volume %1").arg(double(value)));
        volume = value;
    }
    void replaceCurrentItem(std::shared_ptr<StreamItem> item) override {
        record(item ? QStringLiteral("item %1").arg(item->url.path()) : QStringLiteral("item none"));
        m_item = std::move(item);
    }
    TimeControlStatus timeControlStatus() const override { return m_status; }
    ObservationToken observeTimeControlStatus(std::function<void(TimeControlStatus)> handler) override {
        record(QStringLiteral("observed"));
        handler(m_status);
        return m_observers.add(std::move(handler));
    }

    /// Changes the status and tells observers if it differs.
    void setStatus(TimeControlStatus status) {
        if (m_status == status)
            return;
        m_status = status;
        m_observers.notify(status);
    }
    /// Tells observers the status again.
    void announceStatus() { m_observers.notify(m_status); }

    bool wanted = false;
    std::optional<float> volume;

private:
    void record(const QString& call) {
        m_factory.calls << QStringLiteral("%1 %2").arg(m_number).arg(call);
        if (m_factory.onCall)
            m_factory.onCall();
    }

    FakeStreamPlayerFactory& m_factory;
    int m_number;
    std::shared_ptr<StreamItem> m_item;
    TimeControlStatus m_status = TimeControlStatus::paused;
    ObserverList<TimeControlStatus> m_observers;
};

inline std::unique_ptr<StreamPlayer> FakeStreamPlayerFactory::makePlayer(std::shared_ptr<StreamItem> item) {
    return std::make_unique<FakeStreamPlayer>(*this, std::move(item));
}

} // namespace zofra::test
