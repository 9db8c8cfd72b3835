// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/AudioFindings.h"

#include "platform/linux/Descriptor.h"

#include <QFile>
#include <QJsonArray>

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <sys/un.h>

namespace zofra::doctor {

namespace {

/// Whether somebody takes connections there.
SoundServer::State stateOf(const QString& path) {
    const auto name = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || static_cast<std::size_t>(name.size()) >= sizeof(address.sun_path))
        return SoundServer::State::absent;
    std::ranges::copy(name, address.sun_path);
    const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.isOpen())
        return SoundServer::State::absent;
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    const int error = ::connect(socket.get(), generic, sizeof(address)) == 0 ? 0 : errno;
    // A server with a full queue is there all the same.
    if (error == 0 || error == EAGAIN)
        return SoundServer::State::present;
    return error == ENOENT ? SoundServer::State::absent : SoundServer::State::refuses;
}

constexpr qsizetype namedDevices = 3;

QString driverName(const QString& driver, AppLanguage language) {
    if (driver == u"pulse")
        return text::pulseOrPipeWire.in(language);
    if (driver == u"pipewire")
        return u"PipeWire"_qs;
    return driver == u"alsa" ? text::alsaAlone.in(language) : driver;
}

QString deviceList(const QStringList& devices, AppLanguage language) {
    QString text = devices.first(std::min(devices.size(), namedDevices)).join(u", "_qs);
    if (devices.size() > namedDevices)
        text += u' ' + text::andMore.in(language, devices.size() - namedDevices);
    return text;
}

} // namespace

SoundServer SoundServer::find() {
    const QString set = qEnvironmentVariable("PULSE_SERVER");
    if (!set.isEmpty()) {
        const bool isPath = set.startsWith(u"unix:") || set.startsWith(u'/');
        const QString path = set.startsWith(u"unix:") ? set.mid(5) : set;
        // A server elsewhere is only found by playing.
        return {isPath ? stateOf(path) : State::absent, set};
    }
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty())
        return {};
    const QString path = folder + u"/pulse/native"_qs;
    return {stateOf(path), path};
}

Finding judgeAudio(const SoundServer& server, const AudioProbe& probe, AppLanguage language) {
    static constexpr std::array states{"absent", "refuses", "present"};
    const QString area = u"audio"_qs;
    const QJsonObject details{
        {u"server"_qs, server.address},
        {u"server_state"_qs, QString::fromLatin1(states.at(static_cast<std::size_t>(server.state)))},
        {u"driver"_qs, probe.driver},
        {u"devices"_qs, QJsonArray::fromStringList(probe.devices)}};
    switch (probe.outcome) {
    case AudioProbe::Outcome::opened:
        return fine(
            area,
            driverName(probe.driver, language) +
                (probe.devices.isEmpty() ? QString() : u": "_qs + deviceList(probe.devices, language)),
            details);
    case AudioProbe::Outcome::noEngine:
        return problem(area, probe.reason, text::installEngine.in(language), details);
    case AudioProbe::Outcome::timedOut:
        return problem(area, text::audioSilent.in(language), text::restartAudio.in(language), details);
    case AudioProbe::Outcome::noDevice:
        break;
    }
    const QString why = probe.reason.isEmpty() ? QString() : u" ("_qs + probe.reason + u')';
    if (server.state == SoundServer::State::present)
        return problem(area, text::noDevice.in(language, why), text::plugInOutput.in(language), details);
    const auto where = server.address.isEmpty() ? QString() : text::at.in(language, server.address);
    return problem(area, text::noServer.in(language, where + why), text::startAudio.in(language), details);
}

} // namespace zofra::doctor
