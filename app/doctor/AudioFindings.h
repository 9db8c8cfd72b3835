// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Finding.h"
#include "platform/linux/audio/AudioProbe.h"

namespace zofra::doctor {

/// The sound server of a session, looked at from outside.
struct SoundServer {
    enum class State { absent, refuses, present };
    State state = State::absent;
    /// Where it is, or should be.
    QString address;

    /// Looks for the server that the environment leads to. Waits for nothing.
    [[nodiscard]] static SoundServer find();
};

[[nodiscard]] Finding judgeAudio(const SoundServer& server, const AudioProbe& probe,
                                 AppLanguage language = AppLanguage::en);

} // namespace zofra::doctor
