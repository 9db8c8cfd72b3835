// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "speakers/SpeakerBackground.h"
#include "tests/support/World.h"

#include <QList>

#include <memory>

namespace zofra::test {

/// A manager's inner state in a world of fakes, everything on the test's thread. The network 10.0.0.0/24 has
/// been searched.
struct Background : World {
    Background()
        : World(FakeTaskPool::Mode::inPlace) {
        state->searched.set({{QStringLiteral("eth0"), QStringLiteral("10.0.0.2"), std::nullopt}});
    }

    QList<bool> denials;
    QList<QList<SonosRoom>> found;
    int runsEnded = 0;
    std::shared_ptr<SpeakerBackground> state = std::make_shared<SpeakerBackground>(
        SpeakerBackground::Outside{http, queue, tasks, network, log},
        SpeakerBackground::Reports{[this](bool denied) { denials.append(denied); },
                                   [this](const QList<SonosRoom>& rooms) { found.append(rooms); },
                                   [this] { ++runsEnded; }});
};

} // namespace zofra::test
