// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RadioStateSource.h"

#include "metadata/RadioViewModel.h"
#include "playback/RadioPlayer.h"
#include "speakers/SonosManager.h"
#include "stations/LanguageManager.h"
#include "stations/texts/InterfaceTexts.h"

#include <utility>

namespace zofra {

namespace {

void readPlayback(RadioState& state, const RadioPlayer& player, const SonosManager& sonos) {
    const bool isHere = sonos.activeTarget.get() == AudioOutputTarget::localMac();
    state.station = player.currentStation;
    state.isPlaying = isHere ? player.isPlaying : sonos.isSonosPlaying;
    state.isBuffering = state.isPlaying && player.isPlaying && player.isBuffering;
    state.localPlayback = player.isPlaying ? RadioState::LocalPlayback::playing
                          : player.player  ? RadioState::LocalPlayback::paused
                                           : RadioState::LocalPlayback::stopped;
    state.volume = player.volume;
}

void readOutput(RadioState& state, const SonosManager& sonos) {
    state.target = sonos.activeTarget;
    state.targetTitle = sonos.activeTargetTitle();
    for (const SonosRoom& room : sonos.rooms.get())
        state.rooms.push_back({room, sonos.displayTitle(room)});
    state.emptyStateMessage = sonos.emptyStateMessage();
    state.isScanning = sonos.isScanning;
    state.isLocalNetworkDenied = sonos.localNetworkDenied;
}

} // namespace

RadioStateSource::RadioStateSource(MainQueue& mainQueue, const RadioObjects& objects, Complete complete)
    : m_mainQueue(mainQueue)
    , m_objects(objects)
    , m_complete(std::move(complete)) {
    const auto changed = [this] { touch(); };
    m_tokens = {objects.viewModel.observeChanged(changed), objects.player.observeChanged(changed),
                objects.sonos.observeChanged(changed), objects.languages.observeChanged(changed)};
}

RadioState RadioStateSource::now() const {
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

void RadioStateSource::touch() {
    if (std::exchange(m_isPosted, true))
        return;
    m_mainQueue.async(m_lifetime.guard([this] { tell(); }));
}

void RadioStateSource::tell() {
    m_isPosted = false;
    const RadioState state = now();
    if (state == m_told)
        return;
    m_told = state;
    m_observers.notify(state);
}

} // namespace zofra
