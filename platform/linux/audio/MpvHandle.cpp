// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/MpvHandle.h"

#include "platform/linux/net/CurlLibrary.h"

#include <array>
#include <atomic>
#include <clocale>
#include <utility>

namespace zofra {

namespace {

std::atomic<int> endingHandles{0};

} // namespace

/// An mpv that is over, and what its threads still call.
struct MpvHandle::Ending {
    std::shared_ptr<const MpvLibrary> library;
    mpv_handle* handle;
    std::shared_ptr<Callbacks> callbacks;
};

/// What mpv's threads call, to the very end of mpv.
struct MpvHandle::Callbacks : std::enable_shared_from_this<Callbacks> {
    Callbacks(MainQueue& queue, Recipe made, std::function<void()> handler)
        : mainQueue(queue)
        , recipe(std::move(made))
        , onEvents(std::move(handler)) {}

    /// From any thread of mpv's, when it has events. Posts once until they are fetched.
    static void wakeUp(void* data) {
        auto* self = static_cast<Callbacks*>(data);
        if (self->isPosted.exchange(true))
            return;
        self->mainQueue.async([weak = self->weak_from_this()] {
            const auto alive = weak.lock();
            if (alive && !alive->isOver) {
                alive->isPosted = false;
                alive->onEvents();
            }
        });
    }

    MainQueue& mainQueue;
    const Recipe recipe;
    const std::function<void()> onEvents;
    std::atomic<bool> isPosted{false};
    /// Main thread only.
    bool isOver = false;
};

void MpvHandle::make(MainQueue& mainQueue, const Recipe& recipe, std::function<void()> onEvents,
                     const Ready& ready) {
    // mpv refuses to start, and its numbers would go wrong, under any other notation. Here because it is not
    // safe on another thread, and not earlier because the application object sets the user's.
    std::setlocale(LC_NUMERIC, "C");
    endWhatWaits(recipe);
    const auto callbacks = std::make_shared<Callbacks>(mainQueue, recipe, std::move(onEvents));
    const auto post = [&mainQueue, ready](Result<std::shared_ptr<MpvHandle>> made) {
        mainQueue.async([ready, made = std::move(made)] { ready(made); });
    };
    if (!recipe.startThread([recipe, callbacks, post] { post(makeNow(recipe, callbacks)); }))
        post(failure(u"No thread could be started for the audio engine"_qs));
}

MpvHandle::MpvHandle(std::shared_ptr<const MpvLibrary> library, mpv_handle* handle,
                     std::shared_ptr<Callbacks> callbacks)
    : m_library(std::move(library))
    , m_handle(handle)
    , m_callbacks(std::move(callbacks)) {
    m_library->setWakeupCallback(m_handle, &Callbacks::wakeUp, m_callbacks.get());
}

MpvHandle::~MpvHandle() {
    // Returns when no call is under way any more; the callbacks stay until the very end all the same.
    m_library->setWakeupCallback(m_handle, nullptr, nullptr);
    m_callbacks->isOver = true;
    waitingToEnd().push_back({m_library, m_handle, m_callbacks});
    endWhatWaits(m_callbacks->recipe);
}

std::vector<MpvHandle::Ending>& MpvHandle::waitingToEnd() {
    static auto* const waiting = new std::vector<Ending>;
    return *waiting;
}

void MpvHandle::endWhatWaits(const Recipe& recipe) {
    auto& waiting = waitingToEnd();
    while (!waiting.empty()) {
        const auto& next = waiting.back();
        ++endingHandles;
        const bool isStarted = recipe.startThread([next] {
            next.library->terminateDestroy(next.handle);
            --endingHandles;
        });
        if (!isStarted) {
            --endingHandles;
            std::array<const char*, 2> stop{"stop", nullptr};
            next.library->commandAsync(next.handle, 0, stop.data());
            return;
        }
        waiting.pop_back();
    }
}

int MpvHandle::stillEnding() {
    return endingHandles;
}

Result<std::shared_ptr<MpvHandle>> MpvHandle::makeNow(const Recipe& recipe,
                                                      const std::shared_ptr<Callbacks>& callbacks) {
    // First, so that no thread prepares TLS while hundreds of libraries are being loaded.
    static_cast<void>(recipe.streams->settings());
    if (const auto& missing = curl().problem)
        return failure(*missing);
    const auto library = MpvLibrary::load(recipe.libraryFile);
    const auto handle = library.and_then([](const auto& mpv) { return mpv->start(); });
    if (!handle)
        return failure(handle.error());
    if (const int result = recipe.streams->serve(*handle, (*library)->streamCbAddRo); result < 0) {
        (*library)->terminateDestroy(*handle);
        return failure(u"libmpv does not take our streams: "_qs + (*library)->errorText(result));
    }
    (*library)->observeProperty(*handle, coreIdleId, "core-idle", MPV_FORMAT_FLAG);
    (*library)->observeProperty(*handle, pausedForCacheId, "paused-for-cache", MPV_FORMAT_FLAG);
    return std::shared_ptr<MpvHandle>(new MpvHandle(*library, *handle, callbacks));
}

void MpvHandle::command(std::uint64_t id, const QByteArray& name, const QByteArray& argument) {
    std::array<const char*, 3> words{name.constData(), argument.isEmpty() ? nullptr : argument.constData(),
                                     nullptr};
    m_library->commandAsync(m_handle, id, words.data());
}

void MpvHandle::setFlag(const char* property, bool value) {
    int flag = value ? 1 : 0;
    m_library->setPropertyAsync(m_handle, 0, property, MPV_FORMAT_FLAG, &flag);
}

void MpvHandle::setNumber(const char* property, double value) {
    m_library->setPropertyAsync(m_handle, 0, property, MPV_FORMAT_DOUBLE, &value);
}

void MpvHandle::setText(const char* property, const QString& value) {
    const auto bytes = value.toUtf8();
    const char* text = bytes.constData();
    m_library->setPropertyAsync(m_handle, 0, property, MPV_FORMAT_STRING, &text);
}

} // namespace zofra
