// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/ChildProcess.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <QUuid>

#include <stdexcept>
#include <string>

namespace zofra::test {

/// A certificate and its key, as PEM files.
struct TlsIdentity {
    QString certificateFile;
    QString keyFile;
};

/// A certificate authority that lives as long as this object, made with the openssl program.
class TestAuthority {
public:
    TestAuthority() {
        run({u"req"_qs, u"-x509"_qs, u"-newkey"_qs, u"ec"_qs, u"-pkeyopt"_qs,
             u"ec_paramgen_curve:prime256v1"_qs, u"-nodes"_qs, u"-days"_qs, u"2"_qs, u"-subj"_qs,
             u"/CN=Throwaway "_qs + QUuid::createUuid().toString(), u"-keyout"_qs, path(u"ca.key"_qs),
             u"-out"_qs, path(u"ca.pem"_qs)});
    }

    /// An intermediate one, which `issuer` vouches for.
    explicit TestAuthority(TestAuthority& issuer) {
        const auto identity = issuer.certify(u"Intermediate"_qs, "basicConstraints=critical,CA:TRUE\n");
        QFile::copy(identity.certificateFile, path(u"ca.pem"_qs));
        QFile::copy(identity.keyFile, path(u"ca.key"_qs));
    }

    [[nodiscard]] QString certificateFile() const { return path(u"ca.pem"_qs); }

    /// `names` as in a subjectAltName: "IP:127.0.0.1,DNS:localhost".
    [[nodiscard]] TlsIdentity identityFor(const QString& names) {
        return certify(u"server"_qs, "subjectAltName=" + names.toUtf8() + "\n");
    }

private:
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

    TlsIdentity certify(const QString& commonName, const QByteArray& extensionLines) {
        const auto stem = u"server"_qs + QString::number(++m_count);
        const TlsIdentity identity{path(stem + u".pem"_qs), path(stem + u".key"_qs)};
        run({u"req"_qs, u"-newkey"_qs, u"ec"_qs, u"-pkeyopt"_qs, u"ec_paramgen_curve:prime256v1"_qs,
             u"-nodes"_qs, u"-subj"_qs, u"/CN="_qs + commonName, u"-keyout"_qs, identity.keyFile, u"-out"_qs,
             path(stem + u".csr"_qs)});
        QFile extensions(path(stem + u".ext"_qs));
        if (!extensions.open(QIODevice::WriteOnly))
            throw std::runtime_error("cannot write");
        extensions.write(extensionLines);
        extensions.close();
        run({u"x509"_qs, u"-req"_qs, u"-days"_qs, u"1"_qs, u"-in"_qs, path(stem + u".csr"_qs), u"-CA"_qs,
             path(u"ca.pem"_qs), u"-CAkey"_qs, path(u"ca.key"_qs), u"-CAcreateserial"_qs, u"-extfile"_qs,
             extensions.fileName(), u"-out"_qs, identity.certificateFile});
        return identity;
    }

    static void run(const QStringList& arguments) {
        if (runProgram(u"openssl"_qs, arguments) != 0)
            throw std::runtime_error("openssl " + arguments.join(u' ').toStdString() + " has failed");
    }

    QTemporaryDir m_folder;
    int m_count = 0;
};

} // namespace zofra::test
