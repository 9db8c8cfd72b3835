// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"
#include "platform/linux/net/CurlGlobal.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <atomic>
#include <cstdio>
#include <optional>

namespace zofra {

/// Where the certificates stand that vouch for servers: the system's, and those of one more file where one
/// was named. A plain value.
///
/// A directory with one file per authority is preferred over one bundle of all of them: OpenSSL then reads
/// the one it needs, while a bundle is parsed as a whole for each connection.
struct TrustedAuthorities {
    /// PEM file, for libraries that take one beside a directory.
    std::optional<QByteArray> file;
    /// Directory with hashed names.
    std::optional<QByteArray> directory;
    /// PEM text, when two files have to be laid together because there is no directory.
    std::optional<QByteArray> pem;
    /// The extra file, where one was named.
    std::optional<QByteArray> extra;

    /// Whether another look at the file system would find no more.
    [[nodiscard]] bool isWhole() const { return !extra || directory || pem; }
    /// Why nobody can be verified at this moment, as one line; absent when all is well. The first one of a
    /// process is also told on standard error. Looks at the extra file, from any thread.
    [[nodiscard]] std::optional<QString> problem() const {
        const auto certificates = extra ? certificatesIn(*extra) : QByteArray();
        if (certificates)
            return std::nullopt;
        const auto line = u"No certificate could be read from %1: %2"_qs.arg(QFile::decodeName(*extra),
                                                                             certificates.error());
        static std::atomic<bool> isTold = false;
        if (!isTold.exchange(true))
            std::fprintf(stderr, "zofrazofra: %s\n", qUtf8Printable(line));
        return line;
    }

    /// Looks at the file system. Any thread.
    [[nodiscard]] static TrustedAuthorities find(const std::optional<QString>& extraAuthorityFile) {
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

private:
    [[nodiscard]] static std::optional<QByteArray> systemDirectory() {
        const auto hashedName = u"[0-9a-f]"_qs.repeated(8) + u".0"_qs;
        for (const auto* directory : {"/etc/ssl/certs", "/etc/pki/tls/certs"}) {
            if (!QDir(QString::fromLatin1(directory)).entryList({hashedName}, QDir::Files).isEmpty())
                return QByteArray(directory);
        }
        return std::nullopt;
    }
    [[nodiscard]] static std::optional<QByteArray> systemBundle() {
        const QByteArray libraryBundle =
            curl().problem ? nullptr : curl().versionInfo(CURLVERSION_NOW)->cainfo;
        for (const auto& file : {libraryBundle, QByteArray("/etc/ssl/certs/ca-certificates.crt"),
                                 QByteArray("/etc/pki/tls/certs/ca-bundle.crt"),
                                 QByteArray("/etc/ssl/ca-bundle.pem"), QByteArray("/etc/ssl/cert.pem")}) {
            if (!file.isEmpty() && QFile::exists(QFile::decodeName(file)))
                return file;
        }
        return std::nullopt;
    }
    /// Why the certificates of a file cannot be had, if so. What waits for a writer is no such file.
    [[nodiscard]] static Result<QByteArray> certificatesIn(const QByteArray& name) {
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
};

} // namespace zofra
