// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/TrustedAuthorities.h"

#include <QDir>
#include <QFile>

namespace zofra {

namespace {

bool hasHashedNames(const QString& directory) {
    return !QDir(directory)
                .entryList(
                    {QStringLiteral("[0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f].0")},
                    QDir::Files)
                .isEmpty();
}

std::optional<QByteArray> systemDirectory() {
    for (const auto* directory : {"/etc/ssl/certs", "/etc/pki/tls/certs"}) {
        if (hasHashedNames(QString::fromLatin1(directory)))
            return QByteArray(directory);
    }
    return std::nullopt;
}

std::optional<QByteArray> systemBundle(const QByteArray& libraryBundle) {
    for (const auto& file : {libraryBundle, QByteArray("/etc/ssl/certs/ca-certificates.crt"),
                             QByteArray("/etc/pki/tls/certs/ca-bundle.crt"),
                             QByteArray("/etc/ssl/ca-bundle.pem"), QByteArray("/etc/ssl/cert.pem")}) {
        if (!file.isEmpty() && QFile::exists(QFile::decodeName(file)))
            return file;
    }
    return std::nullopt;
}

QByteArray contents(const QByteArray& name) {
    QFile file(QFile::decodeName(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TrustedAuthorities TrustedAuthorities::find(const std::optional<QString>& extraAuthorityFile,
                                            const QByteArray& libraryBundle) {
    TrustedAuthorities found;
    found.directory = systemDirectory();
    const auto bundle = found.directory ? std::nullopt : systemBundle(libraryBundle);
    if (!extraAuthorityFile) {
        found.file = bundle;
        return found;
    }
    const auto extra = QFile::encodeName(*extraAuthorityFile);
    const auto extraPem = bundle ? contents(extra) : QByteArray();
    // An extra file that cannot be read is left to the library, which then says so.
    if (extraPem.isEmpty())
        found.file = extra;
    else
        found.pem = contents(*bundle) + '\n' + extraPem;
    return found;
}

} // namespace zofra
