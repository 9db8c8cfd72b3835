// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/StandardOutputWriter.h"

#include "platform/ForeignText.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <unistd.h>

namespace zofra {

void prepareStandardStreams() {
    ::signal(SIGPIPE, SIG_IGN);
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        // The lowest free number is taken, which is this one.
        if (::fcntl(descriptor, F_GETFD) == -1 && errno == EBADF)
            static_cast<void>(::open("/dev/null", descriptor == 0 ? O_RDONLY : O_WRONLY)); // NOLINT
    }
}

StandardOutputWriter::StandardOutputWriter(int descriptor)
    : m_descriptor(descriptor) {}

StandardOutputWriter::~StandardOutputWriter() {
    flush();
}

void StandardOutputWriter::writeLine(const QString& line) {
    const std::scoped_lock lock(m_mutex);
    if (m_isGone)
        return;
    flush();
    const auto bytes = visibleText(line).toUtf8() + '\n';
    QByteArray note;
    if (m_dropped > 0)
        note = "(" + QByteArray::number(m_dropped) + " lines were not written: nobody was reading)\n";
    if (m_pending.size() + note.size() + bytes.size() > maxPendingBytes) {
        ++m_dropped;
        return;
    }
    m_dropped = 0;
    m_pending += note + bytes;
    flush();
}

void StandardOutputWriter::flush() {
    while (!m_pending.isEmpty() && !m_isGone) {
        pollfd ready{m_descriptor, POLLOUT, 0};
        const int count = ::poll(&ready, 1, 0);
        if (count == 0 || (count < 0 && errno == EINTR))
            return;
        // A pipe that is ready takes PIPE_BUF bytes without waiting.
        const auto size = static_cast<std::size_t>(std::min<qsizetype>(m_pending.size(), PIPE_BUF));
        const auto written = ::write(m_descriptor, m_pending.constData(), size);
        if (written > 0) {
            m_pending.remove(0, written);
        } else if (written < 0 && (errno == EAGAIN || errno == EINTR)) {
            return;
        } else {
            // Gone for good, or a full disk; neither is a reason to stop the music.
            m_isGone = errno == EPIPE || errno == EBADF;
            m_pending.clear();
            return;
        }
    }
}

} // namespace zofra
