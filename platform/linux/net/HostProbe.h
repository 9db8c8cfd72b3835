// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/linux/net/HttpStream.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <cstddef>
#include <optional>

namespace zofra {

/// How far one request to a service came, and how long each step took.
struct HostProbe {
    /// The steps of a request in their order; what failed, or `done`.
    enum class Step { name, connect, tls, answer, done };
    Step failedAt = Step::done;
    bool timedOut = false;
    /// The operating system's errno of a failed connect, 0 when there was none.
    int systemErrno = 0;
    /// One line, when it failed.
    QString reason;

    /// What the name means, and what the server answered; as far as it came.
    QString address;
    int status = 0;
    QString contentType;
    QByteArray body;
    /// Since the beginning, until the end of each step.
    std::chrono::milliseconds nameTime{0};
    std::chrono::milliseconds connectTime{0};
    std::chrono::milliseconds tlsTime{0};
    std::chrono::milliseconds answerTime{0};

    struct Request {
        QUrl url;
        QByteArray userAgent = zofra::userAgent();
        /// The request is over when so much of the body is there; streams have no end.
        std::size_t enoughBodyBytes = 1;
        std::chrono::milliseconds timeout{10000};
    };
    /// Sends the request, verified as every other of this program, and waits: belongs to a background thread.
    [[nodiscard]] static HostProbe run(const Request& request,
                                       const std::optional<QString>& extraAuthorityFile);
};

} // namespace zofra
