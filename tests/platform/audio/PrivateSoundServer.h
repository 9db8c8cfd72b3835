// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/ChildProcess.h"

#include <QFile>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>

namespace zofra::test {

/// A PulseAudio of the test's own with one sink that goes nowhere. Needs an application object.
class PrivateSoundServer {
public:
    PrivateSoundServer() {
        QFile script(m_folder.filePath(QStringLiteral("server.pa")));
        if (!script.open(QIODevice::WriteOnly))
            return;
        script.write("load-module module-native-protocol-unix auth-anonymous=1 socket=" +
                     socketPath().toUtf8() + "\nload-module module-null-sink sink_name=nowhere\n");
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
    [[nodiscard]] bool isListening() const { return QFile::exists(socketPath()); }

    void start() {
        QFile::remove(socketPath());
        m_process.start(QStringLiteral("pulseaudio"),
                        {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
                         QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--use-pid-file=no"),
                         QStringLiteral("--disable-shm=yes"), QStringLiteral("-F"),
                         m_folder.filePath(QStringLiteral("server.pa"))});
        m_process.waitForStarted(5000);
    }
    /// As a crash would.
    void stop() {
        m_process.kill();
        m_process.waitForFinished(5000);
    }

private:
    [[nodiscard]] QString socketPath() const { return m_folder.filePath(QStringLiteral("native")); }

    QTemporaryDir m_folder;
    ChildProcess m_process;
};

} // namespace zofra::test
