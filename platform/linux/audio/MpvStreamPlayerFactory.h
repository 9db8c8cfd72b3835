// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/OwnEnvironment.h"
#include "platform/linux/audio/AudioEngine.h"
#include "platform/linux/audio/MpvCore.h"
#include "platform/linux/audio/MpvStreamPlayer.h"

#include <QRandomGenerator>
#include <QString>

#include <memory>
#include <optional>
#include <utility>

namespace zofra {

/// Makes players that stream over libmpv, which is loaded when the first of them plays. Main thread only.
class MpvStreamPlayerFactory final : public StreamPlayerFactory {
public:
    struct Configuration {
        /// A file of authorities that streams may also be signed by, besides the system's.
        std::optional<QString> extraAuthorityFile;
        const char* libraryFile = MpvLibrary::defaultFileName;
    };

    /// Queue and log outlive the process's last player and whatever it leaves ending in the background. What
    /// keeps the engine from playing at all (a missing library, no audio device) is one line in `log`; an
    /// authority file that cannot be read is one on standard error.
    MpvStreamPlayerFactory(MainQueue& mainQueue, SystemLog& log, Configuration configuration) {
        // Here, because other threads that read the environment come later. PipeWire's library complains on
        // standard error where PipeWire is not installed.
        if (!qEnvironmentVariableIsSet("PIPEWIRE_DEBUG"))
            OwnEnvironment::set("PIPEWIRE_DEBUG", "0");
        // mpv gives the sound server one name for program and icon. The icon's is given to mpv, the program's
        // here.
        OwnEnvironment::set("PULSE_PROP_OVERRIDE",
                            "application.name='Zofra Zofra' application.icon_name=be.zofra.ZofraZofra " +
                                qgetenv("PULSE_PROP_OVERRIDE"));
        const auto makeSettings = [file = std::move(configuration.extraAuthorityFile)] {
            return HttpStream::Settings{TrustedAuthorities::find(file), userAgent()};
        };
        const MpvHandle::Recipe recipe{configuration.libraryFile,
                                       std::make_shared<StreamSource>(makeSettings)};
        m_engine = std::make_shared<AudioEngine>(
            mainQueue, log,
            [] {
                return std::chrono::duration_cast<ReconnectPacing::Milliseconds>(
                    std::chrono::steady_clock::now().time_since_epoch());
            },
            [] { return QRandomGenerator::global()->generateDouble(); },
            [&mainQueue, recipe](MpvCore::Report report) {
                return std::make_unique<MpvCore>(mainQueue, recipe, std::move(report));
            });
    }

    [[nodiscard]] std::unique_ptr<StreamPlayer> makePlayer(std::shared_ptr<StreamItem> item) override {
        return std::make_unique<MpvStreamPlayer>(m_engine, std::move(item));
    }

    /// To be called when the network has changed or the computer has woken: streams that wait before they are
    /// tried again are tried at once.
    void tryNow() { m_engine->tryNow(); }

private:
    std::shared_ptr<AudioEngine> m_engine;
};

} // namespace zofra
