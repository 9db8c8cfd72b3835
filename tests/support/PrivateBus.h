// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/ChildProcess.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>

#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <unistd.h>

namespace zofra::test {

/// A message bus of the test's own, always at the same address, that can be stopped and started again. It
/// reads no file of the system's.
class PrivateBus {
public:
    /// Starts the bus and makes it the one that `variable` names for this process.
    explicit PrivateBus(const char* variable = "DBUS_SESSION_BUS_ADDRESS")
        : m_variable(variable)
        , m_previous(qEnvironmentVariableIsSet(variable) ? std::optional(qgetenv(variable)) : std::nullopt) {
        qputenv(m_variable.constData(), address().toUtf8());
        QFile config(m_folder.filePath(QStringLiteral("session.conf")));
        if (config.open(QIODevice::WriteOnly)) {
            config.write("<busconfig><type>session</type><listen>" + address().toUtf8() +
                         "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                         "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
                         "<allow own=\"*\"/></policy></busconfig>\n");
            config.close();
        }
        start();
    }
    ~PrivateBus() {
        stop();
        if (m_previous)
            qputenv(m_variable.constData(), *m_previous);
        else
            qunsetenv(m_variable.constData());
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// False where the daemon is not installed.
    [[nodiscard]] static bool isAvailable() {
        return !QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty();
    }

    /// True once the daemon answers; the address is printed when it listens.
    bool start() {
        stop();
        QFile::remove(socketPath());
        int printed[2] = {-1, -1};
        if (::pipe2(printed, O_CLOEXEC) != 0)
            return false;
        // Dies with this process, however that ends.
        m_daemon = spawnProgram(
            QStringLiteral("setpriv"),
            {QStringLiteral("--pdeathsig"), QStringLiteral("KILL"), QStringLiteral("dbus-daemon"),
             QStringLiteral("--config-file=") + m_folder.filePath(QStringLiteral("session.conf")),
             QStringLiteral("--nofork"), QStringLiteral("--nopidfile"), QStringLiteral("--nosyslog"),
             QStringLiteral("--print-address")},
            {printed[1], STDERR_FILENO});
        ::close(printed[1]);
        pollfd news{printed[0], POLLIN, 0};
        char first = 0;
        m_isUp = ::poll(&news, 1, 30000) == 1 && ::read(printed[0], &first, 1) == 1;
        ::close(printed[0]);
        return m_isUp;
    }
    void stop() {
        if (m_daemon > 0)
            killProgram(m_daemon);
        m_daemon = -1;
        m_isUp = false;
    }
    [[nodiscard]] bool isUp() const { return m_isUp; }
    [[nodiscard]] pid_t processId() const { return m_daemon; }

    [[nodiscard]] QString address() const { return QStringLiteral("unix:path=") + socketPath(); }

    /// Another program on the bus.
    class Peer {
    public:
        Peer(const PrivateBus& bus, const QString& name)
            : m_name(name)
            , m_connection(QDBusConnection::connectToBus(bus.address(), name)) {}
        ~Peer() { QDBusConnection::disconnectFromBus(m_name); }
        Peer(const Peer&) = delete;
        Peer& operator=(const Peer&) = delete;
        [[nodiscard]] QDBusConnection& connection() { return m_connection; }

    private:
        QString m_name;
        QDBusConnection m_connection;
    };

private:
    [[nodiscard]] QString socketPath() const { return m_folder.filePath(QStringLiteral("bus")); }

    QByteArray m_variable;
    std::optional<QByteArray> m_previous;
    QTemporaryDir m_folder;
    pid_t m_daemon = -1;
    bool m_isUp = false;
};

} // namespace zofra::test
