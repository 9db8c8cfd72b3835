// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/SyslogLog.h"

#include "platform/ForeignText.h"

#include <syslog.h>
#include <utility>

namespace zofra {

SyslogLog::SyslogLog()
    : SyslogLog([](const QByteArray& line) { ::syslog(LOG_NOTICE, "%s", line.constData()); }) {
    ::openlog("zofrazofra", LOG_PID, LOG_USER);
}

SyslogLog::SyslogLog(Sink sink)
    : m_sink(std::move(sink)) {}

void SyslogLog::log(const QString& line) {
    // Cut first: an endless text is not to be walked through.
    m_sink(cutText(visibleText(cutText(line, maxLineLength)), maxLineLength).toUtf8());
}

} // namespace zofra
