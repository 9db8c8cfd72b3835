// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/DetachedThread.h"
#include "platform/linux/audio/MpvLibrary.h"
#include "platform/linux/audio/StreamSource.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace zofra {

/// One mpv, made and destroyed on threads of its own because both take their time. Everything else is for the
/// main thread, and nothing waits.
class MpvHandle {
public:
    /// What a new mpv is made with.
    struct Recipe {
        const char* libraryFile = MpvLibrary::defaultFileName;
        /// Where its streams come from.
        std::shared_ptr<StreamSource> streams;
        /// Runs work on a thread of its own; false when there is no thread to be had.
        std::function<bool(std::function<void()>)> startThread = &startDetachedThread;
    };
    using Ready = std::function<void(const Result<std::shared_ptr<MpvHandle>>&)>;

    /// Makes one and posts it to `ready`, or why there is none. `onEvents` is then called on the main queue
    /// whenever there are events to be fetched, until the handle ends. The queue outlives all of it.
    static void make(MainQueue& mainQueue, const Recipe& recipe, std::function<void()> onEvents,
                     const Ready& ready);

    /// Silences mpv and ends it in the background; no call comes after. Without a thread to be had, it waits,
    /// silent, for the next `make` or end.
    ~MpvHandle();
    MpvHandle(const MpvHandle&) = delete;
    MpvHandle& operator=(const MpvHandle&) = delete;

    /// How many are still ending. One that looks up a name in vain needs half a minute.
    [[nodiscard]] static int stillEnding();

    void command(std::uint64_t id, const QByteArray& name, const QByteArray& argument = QByteArray());
    void setFlag(const char* property, bool value);
    void setNumber(const char* property, double value);
    void setText(const char* property, const QString& value);
    /// The next event; MPV_EVENT_NONE when there is none. Valid until the next call.
    [[nodiscard]] mpv_event* nextEvent() { return m_library->waitEvent(m_handle, 0); }

    static constexpr std::uint64_t coreIdleId = 1;
    static constexpr std::uint64_t pausedForCacheId = 2;

private:
    struct Callbacks;
    struct Ending;
    MpvHandle(std::shared_ptr<const MpvLibrary> library, mpv_handle* handle,
              std::shared_ptr<Callbacks> callbacks);
    static Result<std::shared_ptr<MpvHandle>> makeNow(const Recipe& recipe,
                                                      const std::shared_ptr<Callbacks>& callbacks);
    /// Those for which there was no thread to be had.
    static std::vector<Ending>& waitingToEnd();
    static void endWhatWaits(const Recipe& recipe);

    std::shared_ptr<const MpvLibrary> m_library;
    mpv_handle* m_handle;
    std::shared_ptr<Callbacks> m_callbacks;
};

} // namespace zofra
