// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/TrustedAuthorities.h"

#include "platform/Result.h"
#include "platform/linux/net/CurlGlobal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <cstdio>

namespace zofra {

namespace {

bool hasHashedNames(const QString& directory) {
    const auto name = u"[0-9a-f]"_qs.repeated(8) + u".0"_qs;
    return !QDir(directory).entryList({name}, QDir::Files).isEmpty();
}

std::optional<QByteArray> systemDirectory() {
    for (const auto* directory : {"/etc/ssl/certs", "/etc/pki/tls/certs"}) {
        if (hasHashedNames(QString::fromLatin1(directory)))
            return QByteArray(directory);
    }
    return std::nullopt;
}

std::optional<QByteArray> systemBundle() {
    const QByteArray libraryBundle = curl_version_info(CURLVERSION_NOW)->cainfo;
    for (const auto& file : {libraryBundle, QByteArray("/etc/ssl/certs/ca-certificates.crt"),
                             QByteArray("/etc/pki/tls/certs/ca-bundle.crt"),
                             QByteArray("/etc/ssl/ca-bundle.pem"), QByteArray("/etc/ssl/cert.pem")}) {
        if (!file.isEmpty() && QFile::exists(QFile::decodeName(file)))
            return file;
    }
    return std::nullopt;
}

/// Why the certificates of a file cannot be had, if so. What waits for a writer is no such file.
Result<QByteArray> certificatesIn(const QByteArray& name) {
    constexpr qint64 mostBytes = 4'194'304;
    QFile file(QFile::decodeName(name));
    if (QFileInfo(file).exists() && !QFileInfo(file).isFile())
        return failure(u"not a file"_qs);
    if (!file.open(QIODevice::ReadOnly))
        return failure(file.errorString());
    if (file.size() > mostBytes)
        return failure(u"too large"_qs);
    auto bytes = file.readAll();
    if (!bytes.contains("-----BEGIN "))
        return failure(u"it holds none in PEM form"_qs);
    return bytes;
}

} // namespace

TrustedAuthorities TrustedAuthorities::find(const std::optional<QString>& extraAuthorityFile) {
    CurlGlobal::initialise();
    TrustedAuthorities found;
    found.directory = systemDirectory();
    const auto bundle = found.directory ? std::nullopt : systemBundle();
    if (!extraAuthorityFile) {
        found.file = bundle;
        return found;
    }
    found.extra = QFile::encodeName(*extraAuthorityFile);
    const auto system = bundle ? certificatesIn(*bundle) : failure(QString());
    const auto extra = system ? certificatesIn(*found.extra) : failure(QString());
    if (system && extra)
        found.pem = *system + '\n' + *extra;
    else
        found.file = found.extra;
    return found;
}

std::optional<QString> TrustedAuthorities::problem() const {
    if (!extra)
        return std::nullopt;
    const auto certificates = certificatesIn(*extra);
    if (certificates)
        return std::nullopt;
    const auto line = u"No certificate could be read from "_qs + QFile::decodeName(*extra) + u": "_qs +
                      certificates.error();
    static std::atomic<bool> isTold = false;
    if (!isTold.exchange(true))
        std::fprintf(stderr, "zofrazofra: %s\n", qUtf8Printable(line));
    return line;
}

} // namespace zofra
