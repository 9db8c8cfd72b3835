// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/SocketTrust.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>

#include <utility>

namespace zofra {

namespace {

constexpr qint64 maxFileBytes = 1024 * 1024;

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

const QSslConfiguration* SocketTrust::configuration() {
    if (m_configuration)
        return m_configuration.get();
    auto configuration = QSslConfiguration::defaultConfiguration();
    configuration.setProtocol(QSsl::TlsV1_2OrLater);
    configuration.setPeerVerifyMode(QSslSocket::VerifyPeer);
    if (m_extraAuthorityFile) {
        const auto extra = certificatesIn(*m_extraAuthorityFile);
        if (extra.isEmpty())
            return nullptr;
        configuration.addCaCertificates(extra);
    }
    m_configuration = std::make_unique<QSslConfiguration>(configuration);
    return m_configuration.get();
}

} // namespace zofra
