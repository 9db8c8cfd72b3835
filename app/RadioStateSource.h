// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/RadioObjects.h"
#include "app/RadioState.h"
#include "metadata/RadioViewModel.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Observable.h"
#include "playback/RadioPlayer.h"
#include "speakers/SonosManager.h"
#include "stations/LanguageManager.h"

#include <array>
#include <functional>
#include <optional>
#include <utility>

namespace zofra {

/// Makes the state from the observed objects. However much changes in one turn of the main queue, the state
/// is made once, in the next, and told when it differs from what was told before. Main thread only.
class RadioStateSource {
public:
    /// Puts in what only the owner knows.
    using Complete = std::function<void(RadioState& state)>;

    /// The objects and the queue outlive the source.
    RadioStateSource(MainQueue& mainQueue, const RadioObjects& objects, Complete complete = {})
        : m_mainQueue(mainQueue)
        , m_objects(objects)
        , m_complete(std::move(complete)) {
        const auto changed = [this] { touch(); };
        m_tokens = {objects.viewModel.observeChanged(changed), objects.player.observeChanged(changed),
                    objects.sonos.observeChanged(changed), objects.languages.observeChanged(changed)};
    }

    /// As it is at this moment.
    [[nodiscard]] RadioState now() const {
        RadioState state;
        state.language = m_objects.languages.currentLanguage();
        readPlayback(state, m_objects.player, m_objects.sonos);
        readOutput(state, m_objects.sonos);
        const RadioViewModel& model = m_objects.viewModel;
        // Until something is known there is nothing but this text, in the language of this moment.
        state.isLoading = model.isLoading();
        state.currentSong = state.isLoading ? texts::loading.in(state.language) : model.currentSong.get();
        state.nextSong = model.nextSong;
        if (m_complete)
            m_complete(state);
        return state;
    }
    /// Calls `handler` in the turn after a change until the token ends.
    [[nodiscard]] ObservationToken observe(std::function<void(const RadioState& state)> handler) {
        return m_observers.add(std::move(handler));
    }
    /// What the owner puts in may have changed.
    void touch() {
        if (std::exchange(m_isPosted, true))
            return;
        m_mainQueue.async(m_lifetime.guard([this] { tell(); }));
    }

private:
    static void readPlayback(RadioState& state, const RadioPlayer& player, const SonosManager& sonos) {
        const bool isHere = sonos.activeTarget.get() == AudioOutputTarget::localMac();
        state.station = player.currentStation;
        state.isPlaying = isHere ? player.isPlaying : sonos.isSonosPlaying;
        state.isBuffering = state.isPlaying && player.isPlaying && player.isBuffering;
        state.localPlayback = player.isPlaying ? RadioState::LocalPlayback::playing
                              : player.player  ? RadioState::LocalPlayback::paused
                                               : RadioState::LocalPlayback::stopped;
        state.volume = player.volume;
    }

    static void readOutput(RadioState& state, const SonosManager& sonos) {
        state.target = sonos.activeTarget;
        state.targetTitle = sonos.activeTargetTitle();
        for (const SonosRoom& room : sonos.rooms.get())
            state.rooms.push_back({room, sonos.displayTitle(room)});
        state.emptyStateMessage = sonos.emptyStateMessage();
        state.isScanning = sonos.isScanning;
        state.isLocalNetworkDenied = sonos.localNetworkDenied;
    }

    void tell() {
        m_isPosted = false;
        const RadioState state = now();
        if (state == m_told)
            return;
        m_told = state;
        m_observers.notify(state);
    }

    MainQueue& m_mainQueue;
    RadioObjects m_objects;
    Complete m_complete;
    std::optional<RadioState> m_told;
    bool m_isPosted = false;
    ObserverList<const RadioState&> m_observers;
    std::array<ObservationToken, 4> m_tokens;
    Lifetime m_lifetime;
};

} // namespace zofra
