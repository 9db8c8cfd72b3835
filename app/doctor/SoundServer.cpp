// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/doctor/AudioFindings.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace zofra::doctor {

namespace {

/// Whether somebody takes connections there.
SoundServer::State stateOf(const QString& path) {
    const auto name = QFile::encodeName(path);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || static_cast<std::size_t>(name.size()) >= sizeof(address.sun_path))
        return SoundServer::State::absent;
    std::copy(name.begin(), name.end(), address.sun_path);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0)
        return SoundServer::State::absent;
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    const int error = ::connect(descriptor, generic, sizeof(address)) == 0 ? 0 : errno;
    ::close(descriptor);
    // A server with a full queue is there all the same.
    if (error == 0 || error == EAGAIN)
        return SoundServer::State::present;
    return error == ENOENT ? SoundServer::State::absent : SoundServer::State::refuses;
}

} // namespace

SoundServer SoundServer::find() {
    const QString set = qEnvironmentVariable("PULSE_SERVER");
    if (!set.isEmpty()) {
        const bool isPath = set.startsWith(QLatin1String("unix:")) || set.startsWith(u'/');
        const QString path = set.startsWith(QLatin1String("unix:")) ? set.mid(5) : set;
        // A server elsewhere is only found by playing.
        return {isPath ? stateOf(path) : State::absent, set};
    }
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty())
        return {};
    const QString path = folder + QStringLiteral("/pulse/native");
    return {stateOf(path), path};
}

} // namespace zofra::doctor
