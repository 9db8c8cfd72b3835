// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/audio/MpvLibrary.h"
#include "platform/linux/audio/StreamSource.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace zofra {

/// One mpv, made and destroyed on threads of its own because both take their time. Everything else is for the
/// main thread, and nothing waits.
class MpvHandle {
public:
    /// What a new mpv is made with.
    struct Recipe {
        const char* libraryFile = MpvLibrary::defaultFileName;
        /// Trusted in addition to the system's authorities.
        std::optional<QString> extraAuthorityFile;
    };
    /// The mpv, or null and why there is none, on one line.
    using Ready = std::function<void(std::shared_ptr<MpvHandle>, const QString& reason)>;

    /// Makes one and posts it to `ready`. `onEvents` is then called on the main queue whenever there are
    /// events to be fetched, until the handle ends. The queue outlives all of it.
    static void make(MainQueue& mainQueue, const Recipe& recipe, std::function<void()> onEvents,
                     const Ready& ready);

    /// Ends mpv in the background; no call comes after.
    ~MpvHandle();
    MpvHandle(const MpvHandle&) = delete;
    MpvHandle& operator=(const MpvHandle&) = delete;

    /// How many are still ending. One that looks up a name in vain needs half a minute.
    [[nodiscard]] static int stillEnding();

    void command(std::uint64_t id, const QByteArray& name, const QByteArray& argument = QByteArray());
    void setFlag(const char* property, bool value);
    void setNumber(const char* property, double value);
    /// The next event; MPV_EVENT_NONE when there is none. Valid until the next call.
    [[nodiscard]] mpv_event* nextEvent();

    static constexpr std::uint64_t coreIdleId = 1;
    static constexpr std::uint64_t pausedForCacheId = 2;

private:
    struct Doorbell;
    MpvHandle(std::shared_ptr<const MpvLibrary> library, mpv_handle* handle,
              std::shared_ptr<Doorbell> doorbell);
    static std::shared_ptr<MpvHandle> makeNow(const Recipe& recipe, const std::shared_ptr<Doorbell>& doorbell,
                                              QString& reason);
    static QString configure(const MpvLibrary& library, mpv_handle* handle, StreamSource& streams);
    static void ring(void* doorbell);

    std::shared_ptr<const MpvLibrary> m_library;
    mpv_handle* m_handle;
    std::shared_ptr<Doorbell> m_doorbell;
};

} // namespace zofra
