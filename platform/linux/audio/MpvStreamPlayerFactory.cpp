// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/MpvStreamPlayerFactory.h"

#include "platform/linux/OwnEnvironment.h"
#include "platform/linux/audio/AudioEngine.h"
#include "platform/linux/audio/MpvCore.h"
#include "platform/linux/audio/MpvStreamPlayer.h"

#include <QRandomGenerator>

#include <utility>

namespace zofra {

namespace {

ReconnectPacing::SteadyClock steadyClock() {
    return [] {
        return std::chrono::duration_cast<ReconnectPacing::Milliseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
    };
}

} // namespace

MpvStreamPlayerFactory::MpvStreamPlayerFactory(MainQueue& mainQueue, SystemLog& log,
                                               Configuration configuration) {
    // Here, because other threads that read the environment come later. PipeWire's library complains on
    // standard error where PipeWire is not installed.
    if (!qEnvironmentVariableIsSet("PIPEWIRE_DEBUG"))
        OwnEnvironment::set("PIPEWIRE_DEBUG", "0");
    // mpv gives the sound server one name for program and icon. The icon's is given to mpv, the program's
    // here.
    OwnEnvironment::set("PULSE_PROP_OVERRIDE",
                        "application.name='Zofra Zofra' application.icon_name=be.zofra.ZofraZofra " +
                            qgetenv("PULSE_PROP_OVERRIDE"));
    MpvHandle::Recipe recipe;
    recipe.libraryFile = configuration.libraryFile;
    recipe.streams =
        std::make_shared<StreamSource>([extraAuthorityFile = std::move(configuration.extraAuthorityFile)] {
            return HttpStream::Settings{TrustedAuthorities::find(extraAuthorityFile), userAgent()};
        });
    auto makeCore = [&mainQueue, recipe](MpvCore::Report report) {
        return std::make_unique<MpvCore>(mainQueue, recipe, std::move(report));
    };
    m_engine = std::make_shared<AudioEngine>(
        mainQueue, log, steadyClock(), [] { return QRandomGenerator::global()->generateDouble(); }, makeCore);
}

std::unique_ptr<StreamPlayer> MpvStreamPlayerFactory::makePlayer(std::shared_ptr<StreamItem> item) {
    return std::make_unique<MpvStreamPlayer>(m_engine, std::move(item));
}

void MpvStreamPlayerFactory::tryNow() {
    m_engine->tryNow();
}

} // namespace zofra
