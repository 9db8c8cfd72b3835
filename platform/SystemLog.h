// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace zofra {

/// The system's log. One call, one line. Callable from any thread; never fails and never blocks for long.
class SystemLog {
public:
    virtual ~SystemLog() = default;
    virtual void log(const QString& line) = 0;
};

/// The program's standard output. One call, one line, flushed. Callable from any thread.
class StandardOutput {
public:
    virtual ~StandardOutput() = default;
    virtual void writeLine(const QString& line) = 0;
};

} // namespace zofra
