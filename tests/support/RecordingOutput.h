// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SystemLog.h"

#include <mutex>
#include <vector>

namespace zofra::test {

/// Keeps every line.
class RecordingSystemLog final : public SystemLog {
public:
    void log(const QString& line) override {
        const std::scoped_lock lock(m_mutex);
        lines.push_back(line);
    }
    std::vector<QString> lines;

private:
    std::mutex m_mutex;
};

/// Keeps every line.
class RecordingStandardOutput final : public StandardOutput {
public:
    void writeLine(const QString& line) override {
        const std::scoped_lock lock(m_mutex);
        lines.push_back(line);
    }
    std::vector<QString> lines;

private:
    std::mutex m_mutex;
};

} // namespace zofra::test
