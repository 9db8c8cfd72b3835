// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SystemLog.h"
#include "platform/linux/LineLimit.h"

#include <QByteArray>

#include <mutex>

namespace zofra {

/// Makes the process safe to write from: ignores SIGPIPE, and opens /dev/null for each of the three standard
/// streams that is closed, so that no file opened later takes its place. To be called first of all, before
/// any thread.
void prepareStandardStreams();

/// From now on no writing to standard output or standard error waits for whoever reads there, this program's
/// own or a library's: what a pipe, a terminal or a socket does not take is lost. Other processes that share
/// them notice nothing, but for sockets.
void neverWaitForReaders();

/// `line` to standard error, after "zofrazofra: ". For what goes wrong while the program runs; at its start
/// and end, when nobody has to be kept from waiting, the C library will do. Callable from any thread.
void writeErrorLine(const QString& line);

/// Standard output, line by line. A reader that has gone is harmless. A reader that does not read is not
/// waited for: up to `maxPendingBytes` are kept for it. What does not fit, or comes at a greater rate than
/// `LineLimit` allows, is counted and told in its place later.
class StandardOutputWriter final : public StandardOutput {
public:
    static constexpr qsizetype maxPendingBytes = 262'144;

    /// Writes to `descriptor`, which stays the caller's.
    explicit StandardOutputWriter(int descriptor = 1);
    /// Writes what can still be written at once.
    ~StandardOutputWriter() override { flush(); }

    void writeLine(const QString& line) override;

private:
    void flush();

    std::mutex m_mutex;
    int m_descriptor;
    QByteArray m_pending;
    LineLimit m_limit;
    bool m_isGone = false;
};

} // namespace zofra
