// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SystemLog.h"

#include <QByteArray>

#include <mutex>

namespace zofra {

/// Makes the process safe to write from: ignores SIGPIPE, and opens /dev/null for each of the three standard
/// streams that is closed, so that no file opened later takes its place. To be called first of all, before
/// any thread.
void prepareStandardStreams();

/// Standard output, line by line. A reader that has gone is harmless. A reader that does not read is not
/// waited for: up to `maxPendingBytes` are kept for it, and what does not fit is counted and told in its
/// place later.
class StandardOutputWriter final : public StandardOutput {
public:
    static constexpr qsizetype maxPendingBytes = 262'144;

    /// Writes to `descriptor`, which stays the caller's.
    explicit StandardOutputWriter(int descriptor = 1);
    /// Writes what can still be written at once.
    ~StandardOutputWriter() override;
    StandardOutputWriter(const StandardOutputWriter&) = delete;
    StandardOutputWriter& operator=(const StandardOutputWriter&) = delete;

    void writeLine(const QString& line) override;

private:
    void flush();

    std::mutex m_mutex;
    int m_descriptor;
    QByteArray m_pending;
    int m_dropped = 0;
    bool m_isGone = false;
};

} // namespace zofra
