// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace zofra {

/// Turns SIGINT, SIGTERM and SIGHUP into a call on the main thread. A second signal ends the program at once.
/// One object per process, made once there is an application object.
class UnixSignals {
public:
    explicit UnixSignals(std::function<void()> asked);
    ~UnixSignals();
    UnixSignals(const UnixSignals&) = delete;
    UnixSignals& operator=(const UnixSignals&) = delete;

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace zofra
