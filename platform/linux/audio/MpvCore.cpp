// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/MpvCore.h"

#include "platform/linux/audio/MpvOptions.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zofra {

namespace {

/// mpv begins with an address within milliseconds unless it hangs. Looked at twice, so that a main thread
/// that was held up has fetched the news in between.
constexpr std::chrono::milliseconds startCheck{750};
constexpr int startChecks = 2;
/// Hung ones that may be left to end by themselves at a time.
constexpr int mostEnding = 3;
/// Events fetched in one go; a bound, never reached by a healthy mpv.
constexpr int mostEvents = 1000;

std::optional<std::int64_t> entryOf(const mpv_event_command& reply) {
    if (reply.result.format != MPV_FORMAT_NODE_MAP)
        return std::nullopt;
    const auto& map = *reply.result.u.list;
    for (int i = 0; i < map.num; ++i) {
        if (std::strcmp(map.keys[i], "playlist_entry_id") == 0 && map.values[i].format == MPV_FORMAT_INT64)
            return map.values[i].u.int64;
    }
    return std::nullopt;
}

} // namespace

MpvCore::MpvCore(MainQueue& mainQueue, MpvHandle::Recipe recipe, Report report)
    : m_mainQueue(mainQueue)
    , m_recipe(std::move(recipe))
    , m_report(std::move(report)) {}

void MpvCore::load(const QUrl& url, EventHandler handler) {
    m_url = url;
    m_handler = std::move(handler);
    m_entry.reset();
    ++m_lastCommand;
    m_isLoadDue = true;
    m_isPrepareDue = true;
    applySoon();
}

void MpvCore::stop() {
    m_url.clear();
    m_handler = nullptr;
    m_entry.reset();
    m_startTimer.reset();
    ++m_lastCommand;
    m_isLoadDue = false;
    m_recipe.streams->expect({});
    if (m_handle && std::exchange(m_isBusy, false))
        m_handle->command(m_lastCommand, "stop");
}

void MpvCore::setPaused(Pause pause) {
    m_pause = pause;
    applySoon();
}

void MpvCore::setVolume(float volume) {
    m_volume = volume;
    applySoon();
}

void MpvCore::setTitle(const QString& title) {
    m_title = title;
    applySoon();
}

void MpvCore::applySoon() {
    if (std::exchange(m_isApplyPosted, true))
        return;
    m_mainQueue.async(m_lifetime.guard([this] {
        m_isApplyPosted = false;
        if (m_isLoadDue && std::exchange(m_isPrepareDue, false))
            prepareStream();
        if (m_handle)
            apply();
        else if (m_isLoadDue)
            makeHandle();
    }));
}

void MpvCore::prepareStream() {
    m_recipe.streams->expect(m_url);
    // Without a thread to be had, mpv's own reading connects.
    static_cast<void>(m_recipe.startThread([streams = m_recipe.streams] { streams->prepare(); }));
}

void MpvCore::apply() {
    if (m_givenVolume != m_volume)
        m_handle->setNumber("volume", mpvVolume(*(m_givenVolume = m_volume)));
    if (m_givenTitle != m_title)
        m_handle->setText("force-media-title", m_givenTitle = m_title);
    if (m_givenPause != m_pause)
        m_handle->setFlag("pause", *(m_givenPause = m_pause) == Pause::yes);
    if (std::exchange(m_isLoadDue, false))
        startLoading();
}

void MpvCore::makeHandle() {
    if (m_making)
        return;
    m_making = true;
    m_isBusy = false;
    m_givenVolume.reset();
    m_givenPause.reset();
    m_givenTitle.clear();
    m_startedEntry.reset();
    m_coreIdle = true;
    m_pausedForCache = false;
    MpvHandle::make(
        m_mainQueue, m_recipe, m_lifetime.guard([this] { drain(); }),
        m_lifetime.guard([this](const Result<std::shared_ptr<MpvHandle>>& handle) { handleReady(handle); }));
}

void MpvCore::handleReady(const Result<std::shared_ptr<MpvHandle>>& handle) {
    m_making = false;
    if (!handle) {
        m_isLoadDue = false;
        m_recipe.streams->expect({});
        m_report(handle.error());
        deliver({EngineEvent::ended(EndCause::engine)});
        return;
    }
    m_handle = *handle;
    apply();
    drain();
}

void MpvCore::startLoading() {
    m_isBusy = true;
    m_handle->command(m_lastCommand, "loadfile", StreamSource::address(m_url));
    m_startChecks = 0;
    m_startTimer =
        m_mainQueue.startTimer(startCheck, MainQueue::Repeat::forever, [this] { replaceHungHandle(); });
}

void MpvCore::replaceHungHandle() {
    if (++m_startChecks < startChecks || MpvHandle::stillEnding() >= mostEnding)
        return;
    m_startTimer.reset();
    m_handle.reset();
    m_entry.reset();
    m_isLoadDue = true;
    makeHandle();
}

void MpvCore::drain() {
    if (!m_handle)
        return;
    std::vector<EngineEvent> events;
    int count = 0;
    for (auto* event = m_handle->nextEvent(); event->event_id != MPV_EVENT_NONE;
         event = m_handle->nextEvent()) {
        if (event->event_id == MPV_EVENT_SHUTDOWN || event->event_id == MPV_EVENT_QUEUE_OVERFLOW) {
            // It ends by itself, or has lost events: nothing it tells can be relied on any more.
            m_handle.reset();
            m_startTimer.reset();
            events.push_back(EngineEvent::ended(EndCause::engine));
            break;
        }
        take(*event, events);
        if (++count == mostEvents) {
            m_mainQueue.async(m_lifetime.guard([this] { drain(); }));
            break;
        }
    }
    deliver(events);
}

void MpvCore::take(const mpv_event& event, std::vector<EngineEvent>& events) {
    switch (event.event_id) {
    case MPV_EVENT_COMMAND_REPLY:
        takeReply(event, events);
        break;
    case MPV_EVENT_START_FILE:
        takeStart(static_cast<const mpv_event_start_file*>(event.data)->playlist_entry_id, events);
        break;
    case MPV_EVENT_END_FILE:
        takeEnd(*static_cast<const mpv_event_end_file*>(event.data), events);
        break;
    case MPV_EVENT_FILE_LOADED:
        if (isOurs())
            events.push_back(EngineEvent::fileLoaded());
        break;
    case MPV_EVENT_PLAYBACK_RESTART:
        if (isOurs())
            events.push_back(EngineEvent::playbackRestarted());
        break;
    case MPV_EVENT_PROPERTY_CHANGE:
        takeProperty(event, events);
        break;
    default:
        break;
    }
}

void MpvCore::takeReply(const mpv_event& event, std::vector<EngineEvent>& events) {
    // Only the latest load counts; what replaced it or stopped it has a later number.
    if (event.reply_userdata != m_lastCommand || !m_handler)
        return;
    m_entry = event.error < 0 ? std::nullopt : entryOf(*static_cast<const mpv_event_command*>(event.data));
    if (!m_entry)
        events.push_back(EngineEvent::ended(EndCause::engine));
    else if (isOurs())
        takeStart(*m_entry, events);
}

void MpvCore::takeStart(std::int64_t entry, std::vector<EngineEvent>& events) {
    m_startedEntry = entry;
    if (!isOurs())
        return;
    m_startTimer.reset();
    // A value that is the same as for the stream before is not told again.
    events.push_back(EngineEvent::coreIdle(m_coreIdle));
    events.push_back(EngineEvent::pausedForCache(m_pausedForCache));
}

void MpvCore::takeEnd(const mpv_event_end_file& end, std::vector<EngineEvent>& events) {
    const bool ours = m_entry == end.playlist_entry_id;
    if (m_startedEntry == end.playlist_entry_id)
        m_startedEntry.reset();
    if (!ours || end.reason == MPV_END_FILE_REASON_STOP)
        return;
    const bool noDevice = end.reason == MPV_END_FILE_REASON_ERROR && end.error == MPV_ERROR_AO_INIT_FAILED;
    events.push_back(EngineEvent::ended(noDevice ? EndCause::noAudioDevice : EndCause::stream));
}

void MpvCore::takeProperty(const mpv_event& event, std::vector<EngineEvent>& events) {
    const auto& property = *static_cast<const mpv_event_property*>(event.data);
    const bool known = property.format == MPV_FORMAT_FLAG;
    const bool flag = known && *static_cast<const int*>(property.data) != 0;
    if (event.reply_userdata == MpvHandle::coreIdleId) {
        m_coreIdle = !known || flag;
        if (isOurs())
            events.push_back(EngineEvent::coreIdle(m_coreIdle));
    } else if (event.reply_userdata == MpvHandle::pausedForCacheId) {
        m_pausedForCache = flag;
        if (isOurs())
            events.push_back(EngineEvent::pausedForCache(m_pausedForCache));
    }
}

void MpvCore::deliver(const std::vector<EngineEvent>& events) {
    if (events.empty() || !m_handler)
        return;
    // Whoever is told may load, stop or end this core: nothing of it is touched afterwards.
    auto handler = m_handler;
    if (std::ranges::find(events, EngineEvent::Kind::ended, &EngineEvent::kind) != events.end()) {
        m_handler = nullptr;
        m_entry.reset();
        m_startTimer.reset();
    }
    handler(events);
}

} // namespace zofra
