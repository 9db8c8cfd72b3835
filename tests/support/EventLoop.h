// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <functional>

namespace zofra::test {

/// Runs the event loop until `condition` holds, checking it after every event. False when `limit` passed
/// first.
inline bool spinUntil(const std::function<bool()>& condition,
                      std::chrono::milliseconds limit = std::chrono::seconds(30)) {
    bool isOver = false;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&isOver] { isOver = true; });
    timer.start(limit);
    while (!condition()) {
        if (isOver)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// The same for a condition that no event announces: looks every millisecond.
inline bool pollUntil(const std::function<bool()>& condition,
                      std::chrono::milliseconds limit = std::chrono::seconds(30)) {
    QTimer wake;
    QObject::connect(&wake, &QTimer::timeout, &wake, [] {});
    wake.start(std::chrono::milliseconds(1));
    return spinUntil(condition, limit);
}

/// A Qt application for tests that need an event loop; make one at the start of the test.
class TestApplication {
public:
    TestApplication()
        : m_application(m_argc, m_argv) {}

private:
    int m_argc = 1;
    char m_name[5] = "test";
    char* m_argv[2] = {m_name, nullptr};
    QCoreApplication m_application;
};

} // namespace zofra::test
