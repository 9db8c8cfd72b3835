// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/RadioStation.h"
#include "stations/ServiceHosts.h"
#include "tests/support/PrintQt.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zofra {
namespace {

using Kind = ServiceHosts::StreamKind;

/// The lines of the sample file that is installed.
QStringList sampleLines() {
    QFile file(QStringLiteral(ZOFRA_SOURCE_DIR "/packaging/etc/endpoints.ini"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
}

/// A line that is a setting commented out: "#key=value". Explanations have a blank behind the sign.
bool isSetting(const QString& line) {
    return line.size() > 1 && line.startsWith(QLatin1Char('#')) && !line.at(1).isSpace();
}

TEST(SampleFileTest, ChangesNothingAsInstalled) {
    for (const QString& line : sampleLines())
        EXPECT_TRUE(line.isEmpty() || line.startsWith(QLatin1Char('#')) || line.startsWith(QLatin1Char('[')))
            << line.toStdString();
}

TEST(SampleFileTest, ShowsEveryKeyWithTheValueThatIsBuiltIn) {
    QStringList keys;
    QString text;
    for (const QString& line : sampleLines()) {
        if (isSetting(line))
            keys.append(line.mid(1).section(QLatin1Char('='), 0, 0));
        if (keys.isEmpty() || keys.last() != QLatin1String("extra_ca"))
            text += (isSetting(line) ? line.mid(1) : line) + QLatin1Char('\n');
    }
    QStringList expected;
    for (const RadioStation station : RadioStation::allCases)
        expected << station.rawValue() + QStringLiteral("_aac")
                 << station.rawValue() + QStringLiteral("_mp3");
    expected << QStringLiteral("live_socket") << QStringLiteral("on_air") << QStringLiteral("scraper")
             << QStringLiteral("extra_ca");
    EXPECT_EQ(keys, expected);

    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("endpoints.ini")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text.toUtf8());
    file.close();
    const ServiceHosts builtIn;
    ServiceHosts hosts;
    EXPECT_TRUE(hosts.overlay(file.fileName(), ServiceHosts::MissingFile::isRefused));
    for (const RadioStation station : RadioStation::allCases) {
        for (const auto kind : {Kind::aac, Kind::mp3})
            EXPECT_EQ(hosts.streamHost(station.rawValue(), kind),
                      builtIn.streamHost(station.rawValue(), kind));
    }
    EXPECT_EQ(hosts.liveSocketHost(), builtIn.liveSocketHost());
    EXPECT_EQ(hosts.onAirHost(), builtIn.onAirHost());
    EXPECT_EQ(hosts.scraperHost(), builtIn.scraperHost());
}

} // namespace
} // namespace zofra
