// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/audio/MpvLibrary.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <array>
#include <chrono>

namespace zofra {

/// The devices of `driver` in the engine's list, which is JSON text. A pure function; hostile text gives
/// none.
[[nodiscard]] inline QStringList audioDevicesOf(const QString& driver, const QByteArray& list) {
    constexpr qsizetype maxDevices = 32;
    QStringList devices;
    if (driver.isEmpty())
        return devices;
    const auto entries = QJsonDocument::fromJson(list).array();
    for (const auto& entry : entries) {
        const auto device = entry.toObject();
        if (devices.size() < maxDevices && device.value(u"name").toString().startsWith(driver + u'/'))
            devices.append(device.value(u"description").toString());
    }
    return devices;
}

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
                                        const char* libraryFile = MpvLibrary::defaultFileName) {
        AudioProbe probe;
        const auto library = MpvLibrary::load(libraryFile);
        const auto handle = library.and_then([](const auto& engine) { return engine->start(); });
        if (!handle) {
            probe.outcome = Outcome::noEngine;
            probe.reason = handle.error();
            return probe;
        }
        probe.listen(**library, *handle, limit);
        (*library)->terminateDestroy(*handle);
        return probe;
    }

private:
    using Clock = std::chrono::steady_clock;
    enum PropertyId : std::uint64_t { coreIdleId = 1, driverId, devicesId, commandId };

    /// A second of MPEG audio that is silent, in the notation for data within an address: frames of 32
    /// kbit/s, mono, whose side information says that nothing follows.
    [[nodiscard]] static QByteArray silence() {
        constexpr int frames = 38;
        constexpr qsizetype bytesAfterHeader = 100;
        return "hex://" + (QByteArray("fffb10c4") + QByteArray(2 * bytesAfterHeader, '0')).repeated(frames);
    }
    /// Plays silence and listens to what becomes of it.
    void listen(const MpvLibrary& library, mpv_handle* mpv, std::chrono::milliseconds limit) {
        library.observeProperty(mpv, coreIdleId, "core-idle", MPV_FORMAT_FLAG);
        library.observeProperty(mpv, driverId, "current-ao", MPV_FORMAT_STRING);
        library.observeProperty(mpv, devicesId, "audio-device-list", MPV_FORMAT_STRING);
        const QByteArray address = silence();
        std::array<const char*, 3> words{"loadfile", address.constData(), nullptr};
        library.commandAsync(mpv, commandId, words.data());

        bool isDone = false;
        bool isRunning = false;
        QByteArray list;
        const auto deadline = Clock::now() + limit;
        while (!isDone && Clock::now() < deadline) {
            const mpv_event& event = *library.waitEvent(mpv, 0.1);
            if (event.event_id == MPV_EVENT_PROPERTY_CHANGE) {
                const auto& property = *static_cast<const mpv_event_property*>(event.data);
                if (property.format == MPV_FORMAT_FLAG)
                    isRunning = *static_cast<const int*>(property.data) == 0;
                else if (property.format == MPV_FORMAT_STRING && event.reply_userdata == driverId)
                    driver = QString::fromUtf8(*static_cast<char* const*>(property.data));
                else if (property.format == MPV_FORMAT_STRING)
                    list = *static_cast<char* const*>(property.data);
            } else if (event.event_id == MPV_EVENT_END_FILE) {
                const auto& end = *static_cast<const mpv_event_end_file*>(event.data);
                isDone = true;
                if (end.reason == MPV_END_FILE_REASON_ERROR) {
                    outcome = Outcome::noDevice;
                    reason = library.errorText(end.error);
                }
            }
            // It sounds, and through which driver.
            if (isRunning && !driver.isEmpty()) {
                outcome = Outcome::opened;
                isDone = true;
            }
        }
        devices = audioDevicesOf(driver, list);
    }
};

} // namespace zofra
