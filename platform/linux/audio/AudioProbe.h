// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/audio/MpvLibrary.h"

#include <QString>
#include <QStringList>

#include <chrono>

namespace zofra {

/// What became of playing a moment of silence the way streams are played.
struct AudioProbe {
    enum class Outcome { opened, noEngine, noDevice, timedOut };
    Outcome outcome = Outcome::timedOut;
    /// What the sound went through: "pulse", "pipewire" or "alsa".
    QString driver;
    /// The devices that this driver has, as their makers describe them.
    QStringList devices;
    /// One line, unless it went well.
    QString reason;

    /// Plays it, and waits for at most `limit`: belongs to a background thread. Nothing is heard.
    [[nodiscard]] static AudioProbe run(std::chrono::milliseconds limit,
                                        const char* libraryFile = MpvLibrary::defaultFileName);
};

/// The devices of `driver` in the engine's list, which is JSON text. A pure function; hostile text gives
/// none.
[[nodiscard]] QStringList audioDevicesOf(const QString& driver, const QByteArray& list);

} // namespace zofra
