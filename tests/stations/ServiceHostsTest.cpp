// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/ServiceHosts.h"

#include "stations/RadioStation.h"
#include "tests/support/PrintQt.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace zofra {
namespace {

using Kind = ServiceHosts::StreamKind;
using Missing = ServiceHosts::MissingFile;

class ServiceHostsTest : public testing::Test {
protected:
    QString write(const QByteArray& bytes) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        return path;
    }
    std::optional<QString> overlay(const QByteArray& bytes) {
        return overlay(write(bytes), Missing::isRefused);
    }
    std::optional<QString> overlay(const QString& file, Missing missing) {
        const auto done = hosts.overlay(file, missing);
        return done ? std::nullopt : std::optional(done.error());
    }
    /// The refusal with the file's name in place of its path.
    QString refusalOf(const QByteArray& bytes) {
        return overlay(bytes).value_or(QStringLiteral("accepted")).replace(path, QStringLiteral("FILE"));
    }

    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("endpoints.ini"));
    ServiceHosts hosts;
};

TEST_F(ServiceHostsTest, hasABuiltInTable) {
    struct Row {
        const char* station;
        const char* aac;
        const char* mp3;
    };
    for (const auto& row : std::vector<Row>{
             {"zofra", "streams.zofra.example", "streams.zofra.example"},
             {"qmusic", "icecast-qmusicbe-cdp.triple-it.nl", "icecast-qmusicbe-cdp.triple-it.nl"},
             {"joe", "icecast-qmusicbe-cdp.triple-it.nl", "icecast-qmusicbe-cdp.triple-it.nl"},
             {"zofra_class_x", "icecast.zofra.example", "icecast.zofra.example"},
             {"radio_contact", "radiocontact.ice.infomaniak.ch", "radiocontact.ice.infomaniak.ch"},
             {"bel_rtl", "stream.rcs.revma.com", "belrtl.ice.infomaniak.ch"},
             {"inside_radio", "n08a-eu.rcs.revma.com", "n13.rcs.revma.com"},
             {"sud_radio_belgique", "stream.ceit.be", "stream.ceit.be"},
             {"sud_radio_hainaut", "stream.ceit.be", "stream.ceit.be"},
         }) {
        EXPECT_EQ(hosts.streamHost(QString::fromUtf8(row.station), Kind::aac), QString::fromUtf8(row.aac));
        EXPECT_EQ(hosts.streamHost(QString::fromUtf8(row.station), Kind::mp3), QString::fromUtf8(row.mp3));
    }
    EXPECT_EQ(hosts.liveSocketHost(), QStringLiteral("socket.qmusic.be"));
    EXPECT_EQ(hosts.onAirHost(), QStringLiteral("core-search.radioplayer.cloud"));
    EXPECT_EQ(hosts.scraperHost(), QStringLiteral("scraper.onlineradiobox.com"));
    EXPECT_EQ(hosts.extraAuthorityFile(), std::nullopt);
}

TEST_F(ServiceHostsTest, isOverriddenKeyByKey) {
    QFile authority(folder.filePath(QStringLiteral("ca.pem")));
    ASSERT_TRUE(authority.open(QIODevice::WriteOnly));
    ASSERT_EQ(
        overlay("[streams]\nzofra_aac=a.test:1 ; mine\n[metadata]\nlive_socket=l.test\non_air=o.test:2\n"
                "scraper=[::1]:3\n[tls]\nextra_ca=" +
                authority.fileName().toUtf8() + "\n"),
        std::nullopt);
    EXPECT_EQ(hosts.streamHost(QStringLiteral("zofra"), Kind::aac), QStringLiteral("a.test:1"));
    EXPECT_EQ(hosts.streamHost(QStringLiteral("zofra"), Kind::mp3), QStringLiteral("streams.zofra.example"));
    EXPECT_EQ(hosts.liveSocketHost(), QStringLiteral("l.test"));
    EXPECT_EQ(hosts.onAirHost(), QStringLiteral("o.test:2"));
    EXPECT_EQ(hosts.scraperHost(), QStringLiteral("[::1]:3"));
    EXPECT_EQ(hosts.extraAuthorityFile(), authority.fileName());
}

TEST_F(ServiceHostsTest, layersInTheOrderGiven) {
    ASSERT_EQ(overlay("[streams]\nzofra_aac=a.test\nzofra_mp3=b.test\n"), std::nullopt);
    ASSERT_EQ(overlay("[streams]\nzofra_aac=c.test\n"), std::nullopt);
    EXPECT_EQ(hosts.streamHost(QStringLiteral("zofra"), Kind::aac), QStringLiteral("c.test"));
    EXPECT_EQ(hosts.streamHost(QStringLiteral("zofra"), Kind::mp3), QStringLiteral("b.test"));
}

TEST_F(ServiceHostsTest, takesEveryKeyOfEveryStation) {
    QByteArray text = "[streams]\n";
    for (const RadioStation station : RadioStation::allCases)
        text += station.rawValue().toUtf8() + "_aac=x.test\n" + station.rawValue().toUtf8() + "_mp3=y.test\n";
    EXPECT_EQ(overlay(text), std::nullopt);
    for (const RadioStation station : RadioStation::allCases) {
        EXPECT_EQ(hosts.streamHost(station.rawValue(), Kind::aac), QStringLiteral("x.test"));
        EXPECT_EQ(hosts.streamHost(station.rawValue(), Kind::mp3), QStringLiteral("y.test"));
    }
}

TEST_F(ServiceHostsTest, refusesWithFileKeyValueAndReason) {
    EXPECT_EQ(refusalOf("[streams]\nzofra_ogg=a.test\n"),
              QStringLiteral("FILE:2: zofra_ogg = a.test: unknown key in [streams]"));
    EXPECT_EQ(refusalOf("[metadata]\nzofra_aac=a.test\n"),
              QStringLiteral("FILE:2: zofra_aac = a.test: unknown key in [metadata]"));
    EXPECT_EQ(refusalOf("[streams]\nZofra_aac=a.test\n"),
              QStringLiteral("FILE:2: Zofra_aac = a.test: unknown key in [streams]"));
    EXPECT_EQ(refusalOf("[stream]\nzofra_aac=a.test\n"), QStringLiteral("FILE:1: unknown section [stream]"));
    EXPECT_EQ(refusalOf("[other]\n"), QStringLiteral("FILE:1: unknown section [other]"));
    EXPECT_EQ(refusalOf("[streams]\nzofra_aac=\n"), QStringLiteral("FILE:2: zofra_aac: is empty"));
    EXPECT_EQ(
        refusalOf("[streams]\nzofra_aac=http://a\n"),
        QStringLiteral("FILE:2: zofra_aac = http://a: must be host or host:port, without scheme or path"));
    EXPECT_EQ(refusalOf("[streams]\nzofra_aac=a:0\n"),
              QStringLiteral("FILE:2: zofra_aac = a:0: has a port that is not 1 to 65535"));
    EXPECT_EQ(refusalOf("[streams]\nzofra_aac=a\nzofra_mp3=b\nzofra_aac=a\n"),
              QStringLiteral("FILE:4: zofra_aac = a: stands there twice"));
    EXPECT_EQ(refusalOf("[streams]\nhello\n"),
              QStringLiteral("FILE:2: hello: is neither a section nor key=value"));
    EXPECT_EQ(refusalOf("zofra_aac=a\n"),
              QStringLiteral("FILE:1: zofra_aac = a: stands before the first section"));
    EXPECT_EQ(refusalOf("[tls]\nextra_ca=/nowhere/ca.pem\n"),
              QStringLiteral("FILE:2: extra_ca = /nowhere/ca.pem: no such file"));
    EXPECT_EQ(refusalOf("[tls]\nextra_ca=ca.pem\n"),
              QStringLiteral("FILE:2: extra_ca = ca.pem: is no absolute path"));
    EXPECT_EQ(refusalOf("[tls]\nextra_ca=/\n"),
              QStringLiteral("FILE:2: extra_ca = /: cannot be read: Is a directory"));
    EXPECT_EQ(refusalOf("[tls]\nextra_ca=\n"), QStringLiteral("FILE:2: extra_ca: is empty"));
}

TEST_F(ServiceHostsTest, refusesOnOneLineWhateverTheFileHolds) {
    const auto refusal = refusalOf("[streams]\nzofra_aac=a\x1b[31m\x0b"
                                   "b\rc\n");
    EXPECT_EQ(refusal, QStringLiteral("FILE:2: zofra_aac = a?[31m?b?c: is no host name"));
}

TEST_F(ServiceHostsTest, changesNothingWhenItRefuses) {
    ASSERT_NE(overlay("[streams]\nzofra_aac=a.test\nzofra_mp3=b c\n"), std::nullopt);
    EXPECT_EQ(hosts.streamHost(QStringLiteral("zofra"), Kind::aac), QStringLiteral("streams.zofra.example"));
}

TEST_F(ServiceHostsTest, missesAFileOnlyWhereItMust) {
    const auto absent = folder.filePath(QStringLiteral("absent.ini"));
    EXPECT_EQ(overlay(absent, Missing::isFine), std::nullopt);
    EXPECT_EQ(overlay(absent, Missing::isRefused), absent + QStringLiteral(": no such file"));
}

TEST_F(ServiceHostsTest, refusesWhatCannotBeRead) {
    EXPECT_EQ(overlay(folder.path(), Missing::isFine),
              folder.path() + QStringLiteral(": cannot be read: Is a directory"));
    const auto pipe = folder.filePath(QStringLiteral("pipe.ini"));
    ASSERT_EQ(mkfifo(pipe.toUtf8().constData(), 0600), 0);
    EXPECT_EQ(overlay(pipe, Missing::isFine), pipe + QStringLiteral(": cannot be read: Not a regular file"));
    // A link that leads nowhere was meant to be read, so it is not simply a missing file.
    const auto link = folder.filePath(QStringLiteral("link.ini"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/nowhere/at/all"), link));
    const auto refusal = overlay(link, Missing::isFine);
    EXPECT_EQ(refusal, link + QStringLiteral(": no such file"));
}

TEST_F(ServiceHostsTest, isAValue) {
    const ServiceHosts before = hosts;
    ASSERT_EQ(overlay("[metadata]\non_air=x.test\n"), std::nullopt);
    EXPECT_EQ(before.onAirHost(), QStringLiteral("core-search.radioplayer.cloud"));
    EXPECT_EQ(hosts.onAirHost(), QStringLiteral("x.test"));
}

} // namespace
} // namespace zofra
