// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/audio/EngineState.h"

#include <QUrl>

#include <functional>
#include <memory>
#include <vector>

namespace zofra {

/// What can make one stream sound at a time. Main thread only; nothing here waits, and nothing is told in
/// place.
class AudioCore {
public:
    using EventHandler = std::function<void(const std::vector<EngineEvent>& events)>;
    enum class Pause { yes, no };

    virtual ~AudioCore() = default;

    /// Opens `url` in place of what is open. `handler` is told what happens to this connection, everything
    /// that came together in one call, until it has ended or the next `load` or `stop`.
    virtual void load(const QUrl& url, EventHandler handler) = 0;
    /// Closes what is open; its handler is told nothing any more. Silent at once.
    virtual void stop() = 0;
    /// Holds or releases the sound, also of what is opened later.
    virtual void setPaused(Pause pause) = 0;
    /// Linear amplitude, 0 to 1.
    virtual void setVolume(float volume) = 0;
    /// What is said to sound, for the desktop's volume mixer.
    virtual void setTitle(const QString& title) = 0;
};

/// Makes a core that tells `report`, on one line, why it cannot play at all. `report` outlives it. Main
/// thread only.
using AudioCoreMaker =
    std::function<std::unique_ptr<AudioCore>(std::function<void(const QString& reason)> report)>;

} // namespace zofra
