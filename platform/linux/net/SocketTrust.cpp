// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/SocketTrust.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>

#include <utility>

namespace zofra {

namespace {

constexpr qint64 maxFileBytes = 1'048'576;

QList<QSslCertificate> certificatesIn(const QString& name) {
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QSslCertificate::fromData(file.read(maxFileBytes), QSsl::Pem);
}

} // namespace

SocketTrust::SocketTrust(std::optional<QString> extraAuthorityFile)
    : m_extraAuthorityFile(std::move(extraAuthorityFile)) {}

SocketTrust::~SocketTrust() = default;

const std::vector<QSslConfiguration>& SocketTrust::configurations() {
    if (!m_configurations.empty())
        return m_configurations;
    auto system = QSslConfiguration::defaultConfiguration();
    system.setProtocol(QSsl::TlsV1_2OrLater);
    system.setPeerVerifyMode(QSslSocket::VerifyPeer);
    if (m_extraAuthorityFile) {
        const auto extra = certificatesIn(*m_extraAuthorityFile);
        if (extra.isEmpty())
            return m_configurations;
        auto onlyExtra = system;
        onlyExtra.setCaCertificates(extra);
        m_configurations.push_back(onlyExtra);
    }
    m_configurations.push_back(system);
    return m_configurations;
}

} // namespace zofra
