// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/audio/AudioCore.h"

#include <QString>
#include <QStringList>

#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace zofra::test {

class FakeAudioCore;

/// The cores made so far, and everything asked of them in order; they are numbered from 1.
struct FakeAudioCores {
    QStringList calls;
    std::vector<FakeAudioCore*> alive;
    int made = 0;

    [[nodiscard]] FakeAudioCore& last() const { return *alive.back(); }
    [[nodiscard]] AudioCoreMaker maker();
};

/// A core that plays what the test tells it to.
class FakeAudioCore final : public AudioCore {
public:
    explicit FakeAudioCore(FakeAudioCores& cores)
        : m_cores(cores)
        , m_number(++cores.made) {
        cores.alive.push_back(this);
    }
    FakeAudioCore(const FakeAudioCore&) = delete;
    FakeAudioCore& operator=(const FakeAudioCore&) = delete;
    ~FakeAudioCore() override {
        std::erase(m_cores.alive, this);
        record(QStringLiteral("ended"));
    }

    void load(const QUrl& url, EventHandler handler) override {
        record(QStringLiteral("load %1").arg(url.toString()));
        m_handler = std::move(handler);
    }
    void stop() override {
        record(QStringLiteral("stop"));
        m_handler = nullptr;
    }
    void setPaused(Pause pause) override {
        record(pause == Pause::yes ? QStringLiteral("hold") : QStringLiteral("release"));
    }
    void setVolume(float volume) override { record(QStringLiteral("volume %1").arg(double(volume))); }
    void setTitle(const QString& title) override {
        if (!title.isEmpty())
            record(QStringLiteral("title %1").arg(title));
    }

    /// Tells the open connection's events; as from an engine, one that has ended is told nothing more.
    void tell(std::initializer_list<EngineEvent> events) {
        auto handler = m_handler;
        if (!handler)
            return;
        for (const auto& event : events) {
            if (event.kind == EngineEvent::Kind::ended)
                m_handler = nullptr;
        }
        handler(events);
    }
    void tellPlaying() {
        tell({EngineEvent::fileLoaded(), EngineEvent::playbackRestarted(), EngineEvent::coreIdle(false)});
    }
    void tellStall() { tell({EngineEvent::coreIdle(true), EngineEvent::pausedForCache(true)}); }
    void tellEnded(EndCause cause = EndCause::stream) { tell({EngineEvent::ended(cause)}); }
    [[nodiscard]] bool isOpen() const { return static_cast<bool>(m_handler); }

private:
    void record(const QString& call) { m_cores.calls << QStringLiteral("%1 %2").arg(m_number).arg(call); }

    FakeAudioCores& m_cores;
    int m_number;
    EventHandler m_handler;
};

inline AudioCoreMaker FakeAudioCores::maker() {
    return [this](const auto&) { return std::make_unique<FakeAudioCore>(*this); };
}

} // namespace zofra::test
