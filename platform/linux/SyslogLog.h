// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ForeignText.h"
#include "platform/SystemLog.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/LineLimit.h"

#include <QByteArray>
#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>
#include <utility>

namespace zofra {

/// The system's log, as "zofrazofra". What is not printable is made visible, and a line is cut after
/// `maxLineLength` characters. Nobody waits for the log: syslog(3) would, for ever, where the daemon hangs.
/// What it does not take at once is left out, and their number is told with the next line it takes.
class SyslogLog final : public SystemLog {
public:
    static constexpr int maxLineLength = 2000;

    /// Sends to the datagram socket `path`, which need not be there (yet).
    explicit SyslogLog(QByteArray path = QByteArrayLiteral("/dev/log"))
        : m_path(std::move(path)) {}

    void log(const QString& line) override {
        // Cut first: an endless text is not to be walked through.
        const auto text = cutText(visibleText(cutText(line, maxLineLength)), maxLineLength).toUtf8();
        const std::scoped_lock lock(m_mutex);
        if (!m_limit.takes(LineLimit::Clock::now()))
            return;
        const auto note = m_limit.note();
        if (!note.isEmpty() && send(note))
            m_limit.told();
        if (!send(text))
            m_limit.leaveOut();
    }

private:
    [[nodiscard]] bool send(const QByteArray& text) {
        const auto datagram = header() + text;
        const auto size = static_cast<std::size_t>(datagram.size());
        // A second time after the daemon has been started anew.
        for (int attempt = 0; attempt < 2; ++attempt) {
            if (!m_socket.isOpen() && !connect())
                return false;
            if (::send(m_socket.get(), datagram.constData(), size, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0)
                return true;
            if (errno == EAGAIN || errno == EINTR || errno == ENOBUFS)
                return false;
            m_socket = Descriptor();
        }
        return false;
    }
    /// "<13>Nov  2 14:05:09 zofrazofra[42]: ", as the C library writes it.
    [[nodiscard]] static QByteArray header() {
        const auto now = QDateTime::currentDateTime();
        const auto day = QByteArray::number(now.date().day()).rightJustified(2, ' ');
        const auto text = QLocale::c().toString(now, u"MMM '%1' HH:mm:ss").toLatin1().replace("%1", day);
        return '<' + QByteArray::number(LOG_USER | LOG_NOTICE) + '>' + text + " zofrazofra[" +
               QByteArray::number(::getpid()) + "]: ";
    }
    [[nodiscard]] bool connect() {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        if (m_path.size() >= static_cast<qsizetype>(sizeof address.sun_path))
            return false;
        std::ranges::copy(m_path, address.sun_path);
        Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): as the interface of sockets is.
        const auto* name = reinterpret_cast<const sockaddr*>(&address);
        if (!socket.isOpen() || ::connect(socket.get(), name, sizeof address) != 0)
            return false;
        m_socket = std::move(socket);
        return true;
    }

    const QByteArray m_path;
    std::mutex m_mutex;
    LineLimit m_limit;
    Descriptor m_socket;
};

} // namespace zofra
