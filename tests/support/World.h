// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "stations/ServiceHosts.h"
#include "tests/support/FakeDefaultsStore.h"
#include "tests/support/FakeHttpSession.h"
#include "tests/support/FakeLocalNetwork.h"
#include "tests/support/FakeMediaControls.h"
#include "tests/support/FakeMetadataSocket.h"
#include "tests/support/FakeStreamPlayer.h"
#include "tests/support/FakeTaskPool.h"
#include "tests/support/FakeWakeNotifier.h"
#include "tests/support/FakeWorkspace.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/PrintQt.h"
#include "tests/support/RecordingOutput.h"

namespace zofra::test {

/// All that is outside of the program, as fakes that a test moves. A fixture derives from it and makes the
/// parts that it tests.
struct World {
    explicit World(FakeTaskPool::Mode mode = FakeTaskPool::Mode::onDemandThenInPlace)
        : tasks(mode) {}

    ServiceHosts hosts;
    FakeDefaultsStore defaults;
    ManualMainQueue queue;
    FakeHttpSession http;
    FakeSocketFactory sockets;
    FakeTaskPool tasks;
    FakeLocalNetwork network;
    RecordingSystemLog log;
    RecordingStandardOutput output;
    FakeStreamPlayerFactory players;
    FakeNowPlayingInfoCenter nowPlaying;
    FakeRemoteCommandCenter commands;
    FakeWakeNotifier wake;
    FakeWorkspace workspace;
};

} // namespace zofra::test
