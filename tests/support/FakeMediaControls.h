// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MediaControls.h"

#include <functional>
#include <utility>
#include <vector>

namespace zofra::test {

/// Remembers what was to be shown.
class FakeNowPlayingInfoCenter final : public NowPlayingInfoCenter {
public:
    void setNowPlayingInfo(const NowPlayingInfo& info) override {
        shown.push_back(info);
        if (whenShown)
            whenShown();
    }
    std::vector<NowPlayingInfo> shown;
    std::function<void()> whenShown;
};

/// Keeps the handlers for the test to call; a command without handler is not enabled.
class FakeRemoteCommandCenter final : public RemoteCommandCenter {
public:
    void setTogglePlayPauseHandler(Handler handler) override { togglePlayPause = std::move(handler); }
    void setPlayHandler(Handler handler) override { play = std::move(handler); }
    void setPauseHandler(Handler handler) override { pause = std::move(handler); }

    Handler togglePlayPause;
    Handler play;
    Handler pause;
};

} // namespace zofra::test
