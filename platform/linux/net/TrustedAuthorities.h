// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

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
    [[nodiscard]] std::optional<QString> problem() const;

    /// Looks at the file system. Any thread.
    [[nodiscard]] static TrustedAuthorities find(const std::optional<QString>& extraAuthorityFile);
};

} // namespace zofra
