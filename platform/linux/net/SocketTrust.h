// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>
#include <vector>

class QSslConfiguration;

namespace zofra {

/// Whom web sockets trust: the system's authorities, and those of an extra file. Loads the TLS library and
/// the file when first asked, which nobody should do while the program starts. Main thread only.
///
/// The library of Qt 6.4 finds the system's authorities one by one as they are needed, but no more once it is
/// given any other; loading all of the system's instead costs 50 ms and 10 MB. So there are two
/// configurations to try in turn.
class SocketTrust {
public:
    explicit SocketTrust(std::optional<QString> extraAuthorityFile);
    ~SocketTrust();
    SocketTrust(const SocketTrust&) = delete;
    SocketTrust& operator=(const SocketTrust&) = delete;

    /// The ways to trust, each of them sufficient; empty when the extra file holds no certificate.
    [[nodiscard]] const std::vector<QSslConfiguration>& configurations();
    [[nodiscard]] QString extraAuthorityFile() const { return m_extraAuthorityFile.value_or(QString()); }

private:
    const std::optional<QString> m_extraAuthorityFile;
    std::vector<QSslConfiguration> m_configurations;
};

} // namespace zofra
