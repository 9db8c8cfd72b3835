// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "playback/RadioPlayer.h"
#include "tests/support/World.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace zofra::test {

/// A radio player among fakes, with a record of its callbacks.
class RadioPlayerTest : public ::testing::Test, protected World {
protected:
    /// Makes the player; what is to be stored beforehand is in `defaults` by then.
    RadioPlayer& start() {
        radio = std::make_unique<RadioPlayer>(
            RadioPlayer::Environment{players, defaults, queue, nowPlaying, commands, wake, output, hosts});
        radio->onPlaybackStateChanged = [this](bool playing) { states.push_back(playing); };
        radio->onStationChanged = [this](RadioStation station) { stations.push_back(station.rawValue()); };
        return *radio;
    }
    /// Makes a player that already plays with sound and forgets what led to it.
    RadioPlayer& startPlaying() {
        start().play();
        players.current()->setStatus(TimeControlStatus::playing);
        queue.drain();
        states.clear();
        players.calls.clear();
        return *radio;
    }

    [[nodiscard]] QUrl aac(RadioStation station) const { return station.streamAAC(hosts); }
    [[nodiscard]] QUrl mp3(RadioStation station) const { return station.streamMP3(hosts); }

    std::vector<bool> states;
    std::vector<QString> stations;
    std::unique_ptr<RadioPlayer> radio;
};

} // namespace zofra::test
