// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/AudioFindings.h"

#include <QJsonArray>

namespace zofra::doctor {

namespace {

constexpr qsizetype namedDevices = 3;

QString driverName(const QString& driver) {
    if (driver == QLatin1String("pulse"))
        return QStringLiteral("PulseAudio or PipeWire");
    if (driver == QLatin1String("pipewire"))
        return QStringLiteral("PipeWire");
    return driver == QLatin1String("alsa") ? QStringLiteral("ALSA, without a sound server") : driver;
}

QString deviceList(const QStringList& devices) {
    QString text = devices.first(std::min(devices.size(), namedDevices)).join(QStringLiteral(", "));
    if (devices.size() > namedDevices)
        text += QStringLiteral(" and %1 more").arg(devices.size() - namedDevices);
    return text;
}

QString serverName(const SoundServer& server) {
    switch (server.state) {
    case SoundServer::State::absent:
        return QStringLiteral("absent");
    case SoundServer::State::refuses:
        return QStringLiteral("refuses");
    case SoundServer::State::present:
        break;
    }
    return QStringLiteral("present");
}

Finding noDevice(const QString& area, const SoundServer& server, const QString& reason,
                 const QJsonObject& details) {
    const QString why = reason.isEmpty() ? QString() : QStringLiteral(" (") + reason + u')';
    if (server.state == SoundServer::State::present)
        return problem(
            area, QStringLiteral("the sound server answers but has no device that can be opened") + why,
            QStringLiteral("plug in or switch on an output and choose it in the sound settings; \"pactl list "
                           "short sinks\" shows what there is."),
            details);
    return problem(
        area,
        QStringLiteral("no audio server answers") +
            (server.address.isEmpty() ? QString() : QStringLiteral(" at ") + server.address) + why,
        QStringLiteral("start it: systemctl --user start pipewire pipewire-pulse wireplumber (or pulseaudio "
                       "--start). Network players play without one."),
        details);
}

} // namespace

Finding judgeAudio(const SoundServer& server, const AudioProbe& probe) {
    const QString area = QStringLiteral("audio");
    const QJsonObject details{{QStringLiteral("server"), server.address},
                              {QStringLiteral("server_state"), serverName(server)},
                              {QStringLiteral("driver"), probe.driver},
                              {QStringLiteral("devices"), QJsonArray::fromStringList(probe.devices)}};
    switch (probe.outcome) {
    case AudioProbe::Outcome::opened:
        return fine(area,
                    driverName(probe.driver) + (probe.devices.isEmpty()
                                                    ? QString()
                                                    : QStringLiteral(": ") + deviceList(probe.devices)),
                    details);
    case AudioProbe::Outcome::noEngine:
        return problem(area, probe.reason, QStringLiteral("install libmpv 2 (Debian: libmpv2)."), details);
    case AudioProbe::Outcome::timedOut:
        return problem(
            area, QStringLiteral("the audio server does not answer in time"),
            QStringLiteral(
                "start it again: systemctl --user restart pipewire pipewire-pulse (or pulseaudio -k)."),
            details);
    case AudioProbe::Outcome::noDevice:
        break;
    }
    return noDevice(area, server, probe.reason, details);
}

} // namespace zofra::doctor
