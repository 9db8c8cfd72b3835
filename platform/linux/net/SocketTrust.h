// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <memory>
#include <optional>

class QSslConfiguration;

namespace zofra {

/// Whom web sockets trust: the system's authorities, and those of an extra file. Loads the TLS library and
/// the file when first asked, which nobody should do while the program starts. Main thread only.
class SocketTrust {
public:
    explicit SocketTrust(std::optional<QString> extraAuthorityFile);
    ~SocketTrust();
    SocketTrust(const SocketTrust&) = delete;
    SocketTrust& operator=(const SocketTrust&) = delete;

    /// Null when the extra file holds no certificate.
    [[nodiscard]] const QSslConfiguration* configuration();
    [[nodiscard]] QString extraAuthorityFile() const { return m_extraAuthorityFile.value_or(QString()); }

private:
    const std::optional<QString> m_extraAuthorityFile;
    std::unique_ptr<QSslConfiguration> m_configuration;
};

} // namespace zofra
