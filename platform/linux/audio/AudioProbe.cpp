// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/AudioProbe.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <array>

namespace zofra {

namespace {

using Clock = std::chrono::steady_clock;

enum PropertyId : std::uint64_t { coreIdleId = 1, driverId, devicesId, commandId };
constexpr qsizetype maxDevices = 32;

/// A second of MPEG audio that is silent, in the notation for data within an address: frames of 32 kbit/s,
/// mono, whose side information says that nothing follows.
QByteArray silence() {
    constexpr int frames = 38;
    constexpr qsizetype bytesAfterHeader = 100;
    return "hex://" + (QByteArray("fffb10c4") + QByteArray(2 * bytesAfterHeader, '0')).repeated(frames);
}

/// One engine, made for this.
class Engine {
public:
    Engine(std::shared_ptr<const MpvLibrary> library, mpv_handle* handle)
        : m_library(std::move(library))
        , m_handle(handle) {
        m_library->observeProperty(m_handle, coreIdleId, "core-idle", MPV_FORMAT_FLAG);
        m_library->observeProperty(m_handle, driverId, "current-ao", MPV_FORMAT_STRING);
        m_library->observeProperty(m_handle, devicesId, "audio-device-list", MPV_FORMAT_STRING);
        const QByteArray address = silence();
        std::array<const char*, 3> words{"loadfile", address.constData(), nullptr};
        m_library->commandAsync(m_handle, commandId, words.data());
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;
    ~Engine() { m_library->terminateDestroy(m_handle); }

    void listen(AudioProbe& probe, std::chrono::milliseconds limit) {
        const auto deadline = Clock::now() + limit;
        while (!m_isDone && Clock::now() < deadline) {
            const mpv_event* event = m_library->waitEvent(m_handle, 0.1);
            if (event->event_id == MPV_EVENT_PROPERTY_CHANGE)
                propertyChanged(*event);
            else if (event->event_id == MPV_EVENT_END_FILE)
                ended(probe, *static_cast<const mpv_event_end_file*>(event->data));
            // It sounds, and through which driver.
            if (m_isRunning && !m_driver.isEmpty()) {
                probe.outcome = AudioProbe::Outcome::opened;
                m_isDone = true;
            }
        }
        probe.driver = m_driver;
        probe.devices = audioDevicesOf(m_driver, m_devices);
    }

private:
    void propertyChanged(const mpv_event& event) {
        const auto& property = *static_cast<const mpv_event_property*>(event.data);
        if (event.reply_userdata == coreIdleId && property.format == MPV_FORMAT_FLAG)
            m_isRunning = *static_cast<const int*>(property.data) == 0;
        if (property.format != MPV_FORMAT_STRING)
            return;
        const char* text = *static_cast<char* const*>(property.data);
        if (event.reply_userdata == driverId)
            m_driver = QString::fromUtf8(text);
        else if (event.reply_userdata == devicesId)
            m_devices = text;
    }

    void ended(AudioProbe& probe, const mpv_event_end_file& end) {
        m_isDone = true;
        if (end.reason != MPV_END_FILE_REASON_ERROR)
            return;
        probe.outcome = AudioProbe::Outcome::noDevice;
        probe.reason = m_library->errorText(end.error);
    }

    std::shared_ptr<const MpvLibrary> m_library;
    mpv_handle* m_handle;
    bool m_isDone = false;
    bool m_isRunning = false;
    QString m_driver;
    QByteArray m_devices;
};

} // namespace

AudioProbe AudioProbe::run(std::chrono::milliseconds limit, const char* libraryFile) {
    AudioProbe probe;
    const auto library = MpvLibrary::load(libraryFile);
    const auto handle = library.and_then([](const auto& engine) { return engine->start(); });
    if (!handle) {
        probe.outcome = Outcome::noEngine;
        probe.reason = handle.error();
        return probe;
    }
    Engine engine(*library, *handle);
    engine.listen(probe, limit);
    return probe;
}

QStringList audioDevicesOf(const QString& driver, const QByteArray& list) {
    QStringList devices;
    if (driver.isEmpty())
        return devices;
    const auto entries = QJsonDocument::fromJson(list).array();
    for (const auto& entry : entries) {
        const auto device = entry.toObject();
        if (devices.size() < maxDevices &&
            device.value(QLatin1String("name")).toString().startsWith(driver + u'/'))
            devices.append(device.value(QLatin1String("description")).toString());
    }
    return devices;
}

} // namespace zofra
