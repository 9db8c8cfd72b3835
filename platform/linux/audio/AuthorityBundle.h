// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/SystemLog.h"

#include <QByteArray>
#include <QString>

#include <mutex>
#include <optional>

namespace zofra {

/// The file of certificate authorities that streams are checked against: the system's, and one more when the
/// user names one. The engine takes a single file; the joined one lives in memory only, so there is nothing
/// to clean up even after a crash. Callable from any thread.
class AuthorityBundle {
public:
    /// `log` outlives this object.
    AuthorityBundle(std::optional<QString> extraAuthorityFile, SystemLog& log);
    ~AuthorityBundle();
    AuthorityBundle(const AuthorityBundle&) = delete;
    AuthorityBundle& operator=(const AuthorityBundle&) = delete;

    /// A name that can be opened as long as this object lives; empty when the system's authorities are where
    /// the TLS library looks by itself. An extra file that cannot be read is one line in the log, and is not
    /// trusted.
    [[nodiscard]] QByteArray file();

    /// Where the system keeps its authorities: SSL_CERT_FILE when that can be read, else the usual places;
    /// empty when there is none.
    [[nodiscard]] static QByteArray systemFile();

private:
    [[nodiscard]] QByteArray makeFile();

    const std::optional<QString> m_extraAuthorityFile;
    SystemLog& m_log;
    std::mutex m_mutex;
    std::optional<QByteArray> m_file;
    int m_descriptor = -1;
};

} // namespace zofra
