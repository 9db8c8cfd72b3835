// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SystemLog.h"

#include <QByteArray>

#include <functional>

namespace zofra {

/// The system's log through syslog(3), as "zofrazofra". What is not printable is made visible, and a line is
/// cut after `maxLineLength` characters.
class SyslogLog final : public SystemLog {
public:
    static constexpr int maxLineLength = 2000;
    /// Where a finished line goes, UTF-8.
    using Sink = std::function<void(const QByteArray& line)>;

    SyslogLog();
    /// For tests: to `sink`, which must be callable from any thread.
    explicit SyslogLog(Sink sink);

    void log(const QString& line) override;

private:
    Sink m_sink;
};

} // namespace zofra
