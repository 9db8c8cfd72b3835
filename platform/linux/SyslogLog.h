// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SystemLog.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/LineLimit.h"

#include <QByteArray>

#include <mutex>

namespace zofra {

/// The system's log, as "zofrazofra". What is not printable is made visible, and a line is cut after
/// `maxLineLength` characters. Nobody waits for the log: syslog(3) would, for ever, where the daemon hangs.
/// What it does not take at once is left out, and their number is told with the next line it takes.
class SyslogLog final : public SystemLog {
public:
    static constexpr int maxLineLength = 2000;

    /// Sends to the datagram socket `path`, which need not be there (yet).
    explicit SyslogLog(QByteArray path = QByteArrayLiteral("/dev/log"));

    void log(const QString& line) override;

private:
    [[nodiscard]] bool send(const QByteArray& text);
    [[nodiscard]] bool connect();

    const QByteArray m_path;
    std::mutex m_mutex;
    LineLimit m_limit;
    Descriptor m_socket;
};

} // namespace zofra
