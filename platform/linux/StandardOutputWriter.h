// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/ForeignText.h"
#include "platform/SystemLog.h"
#include "platform/linux/LineLimit.h"

#include <QByteArray>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <limits.h>
#include <mutex>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zofra {

/// Makes the process safe to write from: ignores SIGPIPE, and opens /dev/null for each of the three standard
/// streams that is closed, so that no file opened later takes its place. To be called first of all, before
/// any thread.
inline void prepareStandardStreams() {
    ::signal(SIGPIPE, SIG_IGN);
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        // The lowest free number is taken, which is this one.
        if (::fcntl(descriptor, F_GETFD) == -1 && errno == EBADF)
            static_cast<void>(::open("/dev/null", descriptor == 0 ? O_RDONLY : O_WRONLY)); // NOLINT
    }
}

/// From now on no writing to standard output or standard error waits for whoever reads there, this program's
/// own or a library's: what a pipe, a terminal or a socket does not take is lost. Other processes that share
/// them notice nothing, but for sockets.
inline void neverWaitForReaders() {
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
        struct stat status {};
        if (::fstat(descriptor, &status) != 0)
            continue;
        if (S_ISSOCK(status.st_mode))
            ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK); // NOLINT
        if (!S_ISFIFO(status.st_mode) && ::isatty(descriptor) == 0)
            continue;
        // Opened anew it is a description of our own: others who share the pipe go on waiting as they wish.
        const auto path = "/proc/self/fd/" + QByteArray::number(descriptor);
        const int own = ::open(path.constData(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); // NOLINT
        if (own < 0)
            continue;
        static_cast<void>(::dup2(own, descriptor));
        ::close(own);
    }
}

/// Standard output, line by line. A reader that has gone is harmless. A reader that does not read is not
/// waited for: up to `maxPendingBytes` are kept for it. What does not fit, or comes at a greater rate than
/// `LineLimit` allows, is counted and told in its place later.
class StandardOutputWriter final : public StandardOutput {
public:
    static constexpr qsizetype maxPendingBytes = 262'144;

    /// Writes to `descriptor`, which stays the caller's.
    explicit StandardOutputWriter(int descriptor = STDOUT_FILENO)
        : m_descriptor(descriptor) {}
    /// Writes what can still be written at once.
    ~StandardOutputWriter() override { flush(); }

    void writeLine(const QString& line) override {
        const std::scoped_lock lock(m_mutex);
        if (m_isGone || !m_limit.takes(LineLimit::Clock::now()))
            return;
        flush();
        auto bytes = visibleText(line).toUtf8() + '\n';
        if (const auto note = m_limit.note(); !note.isEmpty())
            bytes.prepend(note + '\n');
        if (m_pending.size() + bytes.size() > maxPendingBytes) {
            m_limit.leaveOut();
            return;
        }
        m_limit.told();
        m_pending += bytes;
        flush();
    }

private:
    void flush() {
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

    std::mutex m_mutex;
    int m_descriptor;
    QByteArray m_pending;
    LineLimit m_limit;
    bool m_isGone = false;
};

/// `line` to standard error, after "zofrazofra: ". For what goes wrong while the program runs; at its start
/// and end, when nobody has to be kept from waiting, the C library will do. Callable from any thread.
inline void writeErrorLine(const QString& line) {
    static auto& writer = *new StandardOutputWriter(STDERR_FILENO);
    writer.writeLine(u"zofrazofra: "_qs + line);
}

} // namespace zofra
