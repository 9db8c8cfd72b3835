// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/AudioFindings.h"

#include "stations/texts/DoctorTexts.h"

#include <QJsonArray>

#include <algorithm>
#include <array>

namespace zofra::doctor {

namespace {

constexpr qsizetype namedDevices = 3;

QString driverName(const QString& driver, AppLanguage language) {
    if (driver == QLatin1String("pulse"))
        return texts::doctor::pulseOrPipeWire.in(language);
    if (driver == QLatin1String("pipewire"))
        return QStringLiteral("PipeWire");
    return driver == QLatin1String("alsa") ? texts::doctor::alsaAlone.in(language) : driver;
}

QString deviceList(const QStringList& devices, AppLanguage language) {
    QString text = devices.first(std::min(devices.size(), namedDevices)).join(QStringLiteral(", "));
    if (devices.size() > namedDevices)
        text += u' ' + texts::doctor::andMore.in(language, devices.size() - namedDevices);
    return text;
}

QString serverName(const SoundServer& server) {
    static constexpr std::array names{"absent", "refuses", "present"};
    return QString::fromLatin1(names.at(static_cast<std::size_t>(server.state)));
}

Finding noDevice(const QString& area, const SoundServer& server, const QString& reason,
                 const QJsonObject& details, AppLanguage language) {
    const QString why = reason.isEmpty() ? QString() : QStringLiteral(" (") + reason + u')';
    if (server.state == SoundServer::State::present)
        return problem(area, texts::doctor::noDevice.in(language, why),
                       texts::doctor::plugInOutput.in(language), details);
    const auto where = server.address.isEmpty() ? QString() : texts::doctor::at.in(language, server.address);
    return problem(area, texts::doctor::noServer.in(language, where + why),
                   texts::doctor::startAudio.in(language), details);
}

} // namespace

Finding judgeAudio(const SoundServer& server, const AudioProbe& probe, AppLanguage language) {
    const QString area = QStringLiteral("audio");
    const QJsonObject details{{QStringLiteral("server"), server.address},
                              {QStringLiteral("server_state"), serverName(server)},
                              {QStringLiteral("driver"), probe.driver},
                              {QStringLiteral("devices"), QJsonArray::fromStringList(probe.devices)}};
    switch (probe.outcome) {
    case AudioProbe::Outcome::opened:
        return fine(area,
                    driverName(probe.driver, language) +
                        (probe.devices.isEmpty()
                             ? QString()
                             : QStringLiteral(": ") + deviceList(probe.devices, language)),
                    details);
    case AudioProbe::Outcome::noEngine:
        return problem(area, probe.reason, texts::doctor::installEngine.in(language), details);
    case AudioProbe::Outcome::timedOut:
        return problem(area, texts::doctor::audioSilent.in(language),
                       texts::doctor::restartAudio.in(language), details);
    case AudioProbe::Outcome::noDevice:
        break;
    }
    return noDevice(area, server, probe.reason, details, language);
}

} // namespace zofra::doctor
