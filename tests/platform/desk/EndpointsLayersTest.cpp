// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/XdgFolders.h"
#include "stations/ServiceHosts.h"
#include "tests/support/PrintQt.h"
#include "tests/support/ScopedEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zofra {
namespace {

class EndpointsLayersTest : public testing::Test {
protected:
    EndpointsLayersTest() {
        environment.set("XDG_CONFIG_DIRS", path("strong").toUtf8() + ":" + path("weak").toUtf8());
        environment.set("XDG_CONFIG_HOME", path("home").toUtf8());
    }
    [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }
    QString put(const char* name, const QByteArray& bytes) const {
        const auto file = path(name) + QStringLiteral("/zofrazofra/endpoints.ini");
        QDir().mkpath(QFileInfo(file).path());
        QFile out(file);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write("[metadata]\n" + bytes);
        return file;
    }
    static ServiceHosts loaded(const std::optional<QString>& file = {}) {
        const auto hosts = load(file);
        EXPECT_TRUE(hosts) << (hosts ? "" : hosts.error().toStdString());
        return hosts.value_or(ServiceHosts());
    }
    static Result<ServiceHosts> load(const std::optional<QString>& file = {}) {
        return ServiceHosts::load(xdg::configFiles(ServiceHosts::fileName), file);
    }

    test::ScopedEnvironment environment;
    QTemporaryDir folder;
};

TEST_F(EndpointsLayersTest, areBuiltInWhereThereIsNoFile) {
    EXPECT_EQ(loaded().onAirHost(), QStringLiteral("core-search.radioplayer.cloud"));
    EXPECT_EQ(xdg::configFiles(ServiceHosts::fileName),
              (QStringList{path("weak") + QStringLiteral("/zofrazofra/endpoints.ini"),
                           path("strong") + QStringLiteral("/zofrazofra/endpoints.ini"),
                           path("home") + QStringLiteral("/zofrazofra/endpoints.ini")}));
}

TEST_F(EndpointsLayersTest, areLaidOverEachOtherKeyByKey) {
    put("weak", "on_air=weak\nscraper=weak\nlive_socket=weak\n");
    put("strong", "on_air=strong\nscraper=strong\n");
    put("home", "on_air=home\n");
    auto hosts = loaded();
    EXPECT_EQ(hosts.liveSocketHost(), QStringLiteral("weak"));
    EXPECT_EQ(hosts.scraperHost(), QStringLiteral("strong"));
    EXPECT_EQ(hosts.onAirHost(), QStringLiteral("home"));
    hosts = loaded(put("given", "on_air=given\n"));
    EXPECT_EQ(hosts.onAirHost(), QStringLiteral("given"));
    EXPECT_EQ(hosts.scraperHost(), QStringLiteral("strong"));
}

TEST_F(EndpointsLayersTest, areRefusedWithTheFileThatIsWrong) {
    const auto wrong = put("home", "on_air=a b\n");
    EXPECT_EQ(load().error(), wrong + QStringLiteral(":2: on_air = a b: is no host name"));
    put("home", "on_air=a\n");
    EXPECT_EQ(load(path("absent.ini")).error(), path("absent.ini") + QStringLiteral(": no such file"));
}

} // namespace
} // namespace zofra
