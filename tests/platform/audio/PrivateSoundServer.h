// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/ChildProcess.h"

#include <QFile>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>

#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace zofra::test {

/// A PulseAudio of the test's own with one sink that goes nowhere.
class PrivateSoundServer {
public:
    PrivateSoundServer() {
        QFile script(m_folder.filePath(QStringLiteral("server.pa")));
        if (!script.open(QIODevice::WriteOnly))
            return;
        // The sink first: whoever finds the socket finds the sink.
        script.write("load-module module-null-sink sink_name=nowhere\n"
                     "load-module module-native-protocol-unix auth-anonymous=1 socket=" +
                     socketPath().toUtf8() + "\n");
        script.close();
        start();
    }
    PrivateSoundServer(const PrivateSoundServer&) = delete;
    PrivateSoundServer& operator=(const PrivateSoundServer&) = delete;
    ~PrivateSoundServer() { stop(); }

    [[nodiscard]] static bool isAvailable() {
        return !QStandardPaths::findExecutable(QStringLiteral("pulseaudio")).isEmpty();
    }
    /// For PULSE_SERVER.
    [[nodiscard]] QByteArray address() const { return "unix:" + socketPath().toUtf8(); }
    /// It takes connections. No event tells: to be polled for.
    [[nodiscard]] bool isListening() const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const auto path = socketPath().toLocal8Bit();
        if (static_cast<std::size_t>(path.size()) >= sizeof address.sun_path)
            return false;
        std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
        const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool isTaken =
            ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        ::close(descriptor);
        return isTaken;
    }

    void start() {
        stop();
        QFile::remove(socketPath());
        QFile log(logFile());
        if (!log.open(QIODevice::WriteOnly | QIODevice::Append))
            return;
        m_server = spawnProgram(QStringLiteral("pulseaudio"),
                                {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
                                 QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--use-pid-file=no"),
                                 QStringLiteral("--disable-shm=yes"), QStringLiteral("-F"),
                                 m_folder.filePath(QStringLiteral("server.pa"))},
                                {log.handle(), log.handle()});
    }
    /// As a crash would.
    void stop() {
        if (m_server > 0)
            killProgram(m_server);
        m_server = -1;
    }
    /// What it has said, for a failed test.
    [[nodiscard]] std::string log() const {
        QFile file(logFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string();
    }

private:
    [[nodiscard]] QString socketPath() const { return m_folder.filePath(QStringLiteral("native")); }
    [[nodiscard]] QString logFile() const { return m_folder.filePath(QStringLiteral("log")); }

    QTemporaryDir m_folder;
    pid_t m_server = -1;
};

} // namespace zofra::test
