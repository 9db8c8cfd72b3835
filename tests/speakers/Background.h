// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SpeakerBackground.h"
#include "tests/support/FakeHttpSession.h"
#include "tests/support/FakeLocalNetwork.h"
#include "tests/support/FakeTaskPool.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/RecordingOutput.h"

#include <QList>

#include <memory>

namespace zofra::test {

/// A manager's inner state in a world of fakes, everything on the test's thread. The network 10.0.0.0/24 has
/// been searched.
struct Background {
    Background() {
        state->searched.set({{QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), std::nullopt}});
    }

    FakeHttpSession session;
    ManualMainQueue mainQueue;
    FakeTaskPool tasks{FakeTaskPool::Mode::inPlace};
    FakeLocalNetwork network;
    RecordingSystemLog log;
    QList<bool> denials;
    QList<QList<SonosRoom>> found;
    int runsEnded = 0;
    std::shared_ptr<SpeakerBackground> state = std::make_shared<SpeakerBackground>(
        SpeakerBackground::Outside{session, mainQueue, tasks, network, log},
        SpeakerBackground::Reports{[this](bool denied) { denials.append(denied); },
                                   [this](const QList<SonosRoom>& rooms) { found.append(rooms); },
                                   [this] { ++runsEnded; }});
};

} // namespace zofra::test
