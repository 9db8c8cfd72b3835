// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/AuthorityBundle.h"

#include "tests/support/PrintQt.h"
#include "tests/support/RecordingOutput.h"
#include "tests/support/ScopedEnvironment.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zofra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

QByteArray certificate(const char* name) {
    return QByteArray("-----BEGIN CERTIFICATE-----\n") + name + "\n-----END CERTIFICATE-----\n";
}

class Bundle : public ::testing::Test {
protected:
    Bundle() {
        systemPath = write("system.pem", certificate("system"));
        environment.set("SSL_CERT_FILE", QFile::encodeName(systemPath));
    }
    QString write(const char* name, const QByteArray& contents) {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
        return file.fileName();
    }
    static QByteArray contentsOf(const QByteArray& path) {
        QFile file(QFile::decodeName(path));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.constData();
        return file.readAll();
    }

    QTemporaryDir folder;
    QString systemPath;
    RecordingSystemLog log;
    ScopedEnvironment environment;
};

TEST_F(Bundle, isTheSystemsOwnFileWhenNothingElseIsTrusted) {
    AuthorityBundle bundle(std::nullopt, log);
    EXPECT_EQ(bundle.file(), QFile::encodeName(systemPath));
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(Bundle, joinsTheSystemsWithTheExtraOne) {
    AuthorityBundle bundle(write("extra.pem", certificate("extra")), log);
    const auto contents = contentsOf(bundle.file());
    EXPECT_TRUE(contents.contains(certificate("system")));
    EXPECT_TRUE(contents.contains(certificate("extra")));
    EXPECT_EQ(contentsOf(bundle.file()), contents) << "can be read again";
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(Bundle, keepsTwoCertificatesApartWithoutALineEndBetweenThem) {
    write("system.pem", certificate("system").trimmed());
    AuthorityBundle bundle(write("extra.pem", certificate("extra")), log);
    EXPECT_TRUE(contentsOf(bundle.file()).contains("-----END CERTIFICATE-----\n-----BEGIN"));
}

TEST_F(Bundle, leavesNothingBehind) {
    QByteArray path;
    {
        AuthorityBundle bundle(write("extra.pem", certificate("extra")), log);
        path = bundle.file();
        ASSERT_TRUE(QFile::exists(QFile::decodeName(path)));
    }
    EXPECT_FALSE(QFile::exists(QFile::decodeName(path)));
}

TEST_F(Bundle, saysOnceThatTheExtraFileCannotBeRead) {
    const auto path = folder.filePath(QStringLiteral("missing.pem"));
    AuthorityBundle bundle(path, log);
    EXPECT_EQ(bundle.file(), QFile::encodeName(systemPath));
    EXPECT_EQ(bundle.file(), QFile::encodeName(systemPath));
    EXPECT_THAT(
        log.lines,
        ElementsAre(QStringLiteral("The authorities in %1 cannot be read; streams are checked without them")
                        .arg(path)));
}

TEST_F(Bundle, refusesAnExtraFileThatHoldsNoCertificate) {
    AuthorityBundle bundle(write("extra.pem", "hello\n"), log);
    EXPECT_EQ(bundle.file(), QFile::encodeName(systemPath));
    EXPECT_EQ(log.lines.size(), 1U);
}

TEST_F(Bundle, refusesAnExtraFileOfUnreasonableSize) {
    AuthorityBundle bundle(write("extra.pem", certificate("extra") + QByteArray(9 * 1024 * 1024, '\n')), log);
    EXPECT_EQ(bundle.file(), QFile::encodeName(systemPath));
    EXPECT_EQ(log.lines.size(), 1U);
}

TEST_F(Bundle, ignoresAnSslCertFileThatCannotBeRead) {
    environment.set("SSL_CERT_FILE", QFile::encodeName(folder.filePath(QStringLiteral("missing.pem"))));
    EXPECT_NE(AuthorityBundle::systemFile(), qgetenv("SSL_CERT_FILE"));
}

} // namespace
} // namespace zofra::test
