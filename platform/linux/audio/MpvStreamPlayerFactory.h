// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/MainQueue.h"
#include "platform/StreamPlayer.h"
#include "platform/SystemLog.h"

#include <QString>

#include <memory>
#include <optional>

namespace zofra {

class AudioEngine;

/// Makes players that stream over libmpv, which is loaded when the first of them plays. Main thread only.
class MpvStreamPlayerFactory final : public StreamPlayerFactory {
public:
    struct Configuration {
        /// A file of authorities that streams may also be signed by, besides the system's.
        std::optional<QString> extraAuthorityFile;
        const char* libraryFile = "libmpv.so.2";
    };

    /// Queue and log outlive the process's last player and whatever it leaves ending in the background. What
    /// keeps the engine from playing at all (no library, no audio device, an unreadable authority file) is
    /// one line in `log`.
    MpvStreamPlayerFactory(MainQueue& mainQueue, SystemLog& log, Configuration configuration);

    [[nodiscard]] std::unique_ptr<StreamPlayer> makePlayer(std::shared_ptr<StreamItem> item) override;

    /// To be called when the network has changed or the computer has woken: streams that wait before they are
    /// tried again are tried at once.
    void tryNow();

private:
    std::shared_ptr<AudioEngine> m_engine;
};

} // namespace zofra
