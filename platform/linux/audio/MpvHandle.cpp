// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/MpvHandle.h"

#include "platform/linux/audio/MpvOptions.h"
#include "platform/linux/net/UserAgent.h"

#include <array>
#include <clocale>
#include <system_error>
#include <thread>
#include <utility>

namespace zofra {

namespace {

std::atomic<int> endingHandles{0};

void endInBackground(std::shared_ptr<const MpvLibrary> library, mpv_handle* handle,
                     std::shared_ptr<void> neededUntilThen) {
    ++endingHandles;
    try {
        std::thread([library = std::move(library), handle, needed = std::move(neededUntilThen)] {
            library->terminateDestroy(handle);
            --endingHandles;
        }).detach();
    } catch (const std::system_error&) {
        // No thread to be had: better an mpv that idles for ever than a main thread that waits.
        std::array<const char*, 2> stop{"stop", nullptr};
        library->commandAsync(handle, 0, stop.data());
    }
}

} // namespace

/// What mpv rings, from any of its threads, when it has events. Rings once until the events are fetched. With
/// it stays, to the end of mpv, what else its threads come to.
struct MpvHandle::Doorbell {
    Doorbell(MainQueue& queue, std::function<void()> handler)
        : mainQueue(queue)
        , onEvents(std::move(handler)) {}

    MainQueue& mainQueue;
    const std::function<void()> onEvents;
    std::atomic<bool> rung{false};
    std::atomic<bool> unheard{false};
    std::weak_ptr<Doorbell> self;
    std::optional<StreamSource> streams;
};

void MpvHandle::make(MainQueue& mainQueue, const Recipe& recipe, std::function<void()> onEvents,
                     const Ready& ready) {
    // mpv refuses to start, and its numbers would go wrong, under any other notation. Here because it is not
    // safe on another thread, and not earlier because the application object sets the user's.
    std::setlocale(LC_NUMERIC, "C");
    auto doorbell = std::make_shared<Doorbell>(mainQueue, std::move(onEvents));
    doorbell->self = doorbell;
    auto work = [&mainQueue, recipe, doorbell, ready] {
        QString reason;
        auto handle = makeNow(recipe, doorbell, reason);
        mainQueue.async([ready, handle = std::move(handle), reason] { ready(handle, reason); });
    };
    try {
        std::thread(work).detach();
    } catch (const std::system_error&) {
        mainQueue.async(
            [ready] { ready(nullptr, QStringLiteral("No thread could be started for the audio engine")); });
    }
}

MpvHandle::MpvHandle(std::shared_ptr<const MpvLibrary> library, mpv_handle* handle,
                     std::shared_ptr<Doorbell> doorbell)
    : m_library(std::move(library))
    , m_handle(handle)
    , m_doorbell(std::move(doorbell)) {
    m_library->setWakeupCallback(m_handle, &MpvHandle::ring, m_doorbell.get());
}

MpvHandle::~MpvHandle() {
    // Returns when no call is under way any more; the doorbell stays until the very end all the same.
    m_library->setWakeupCallback(m_handle, nullptr, nullptr);
    m_doorbell->unheard = true;
    endInBackground(m_library, m_handle, m_doorbell);
}

int MpvHandle::stillEnding() {
    return endingHandles;
}

std::shared_ptr<MpvHandle> MpvHandle::makeNow(const Recipe& recipe, const std::shared_ptr<Doorbell>& doorbell,
                                              QString& reason) {
    // First, so that no thread prepares TLS while hundreds of libraries are being loaded.
    HttpStream::Settings settings;
    settings.authorities = HttpStream::authorities(recipe.extraAuthorityFile);
    settings.userAgent = userAgent();
    auto loaded = MpvLibrary::load(recipe.libraryFile);
    if (const auto* problem = std::get_if<QString>(&loaded)) {
        reason = *problem;
        return nullptr;
    }
    const auto library = std::get<std::shared_ptr<const MpvLibrary>>(loaded);
    mpv_handle* handle = library->create();
    if (!handle) {
        reason = QStringLiteral("libmpv cannot be started");
        return nullptr;
    }
    doorbell->streams.emplace(std::move(settings));
    reason = configure(*library, handle, *doorbell->streams);
    if (!reason.isEmpty()) {
        library->terminateDestroy(handle);
        return nullptr;
    }
    return std::shared_ptr<MpvHandle>(new MpvHandle(library, handle, doorbell));
}

QString MpvHandle::configure(const MpvLibrary& library, mpv_handle* handle, StreamSource& streams) {
    for (const auto& option : mpvOptions()) {
        const int result = library.setOptionString(handle, option.name, option.value.constData());
        if (result < 0 && option.need == MpvOption::Need::required)
            return QStringLiteral("libmpv does not take the option %1: %2")
                .arg(QString::fromLatin1(option.name), QString::fromUtf8(library.errorString(result)));
    }
    if (const int result = library.initialize(handle); result < 0)
        return QStringLiteral("libmpv cannot be started: %1")
            .arg(QString::fromUtf8(library.errorString(result)));
    if (const int result = streams.serve(handle, library.streamCbAddRo); result < 0)
        return QStringLiteral("libmpv does not take our streams: %1")
            .arg(QString::fromUtf8(library.errorString(result)));
    library.observeProperty(handle, coreIdleId, "core-idle", MPV_FORMAT_FLAG);
    library.observeProperty(handle, pausedForCacheId, "paused-for-cache", MPV_FORMAT_FLAG);
    return {};
}

void MpvHandle::ring(void* doorbell) {
    auto* bell = static_cast<Doorbell*>(doorbell);
    if (bell->rung.exchange(true))
        return;
    bell->mainQueue.async([weak = bell->self] {
        const auto alive = weak.lock();
        if (alive && !alive->unheard) {
            alive->rung = false;
            alive->onEvents();
        }
    });
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

mpv_event* MpvHandle::nextEvent() {
    return m_library->waitEvent(m_handle, 0);
}

} // namespace zofra
