// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <unistd.h>
#include <utility>

namespace zofra {

/// Turns SIGINT, SIGTERM and SIGHUP into a call on the main thread. A second signal ends the program at once.
/// One object per process, made once there is an application object.
class UnixSignals {
public:
    explicit UnixSignals(std::function<void()> asked) {
        if (pipe2(s_pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
            return;
        m_notifier = std::make_unique<QSocketNotifier>(s_pipe[0], QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                         [asked = std::move(asked)] {
                             std::array<char, 16> bytes{};
                             while (read(s_pipe[0], bytes.data(), bytes.size()) > 0) {
                             }
                             asked();
                         });
        for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction previous {};
            // What is being ignored stays so: whoever started us with nohup means it.
            if (sigaction(number, nullptr, &previous) == 0 && previous.sa_handler == SIG_IGN)
                continue;
            struct sigaction action {};
            action.sa_handler = handleSignal;
            action.sa_flags = SA_RESTART;
            sigemptyset(&action.sa_mask);
            sigaction(number, &action, nullptr);
        }
    }
    ~UnixSignals() {
        for (const int number : {SIGINT, SIGTERM, SIGHUP})
            std::signal(number, SIG_DFL);
        m_notifier.reset();
        for (int& descriptor : s_pipe) {
            if (descriptor >= 0)
                close(descriptor);
            descriptor = -1;
        }
    }
    UnixSignals(const UnixSignals&) = delete;
    UnixSignals& operator=(const UnixSignals&) = delete;

private:
    /// Only what may be called at any moment.
    static void handleSignal(int number) {
        const char byte = static_cast<char>(number);
        [[maybe_unused]] const auto written = write(s_pipe[1], &byte, 1);
        // Whoever asks twice does not want to wait.
        std::signal(number, SIG_DFL);
    }

    static inline std::array<int, 2> s_pipe{-1, -1};
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace zofra
