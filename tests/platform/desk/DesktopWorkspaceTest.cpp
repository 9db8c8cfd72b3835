// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/DesktopWorkspace.h"

#include "platform/linux/DBusExportedObject.h"
#include "tests/platform/desk/BusTest.h"
#include "tests/support/ScopedEnvironment.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace zofra {
namespace {

using test::pollUntil;
using test::spinUntil;
using Sandbox = DesktopWorkspace::Sandbox;

const QUrl privacyPage(
    QStringLiteral("x-apple.systempreferences:com.apple.preference.security?Privacy_LocalNetwork"));

class DesktopWorkspaceTest : public test::BusTest {
protected:
    DesktopWorkspaceTest() {
        environment.set("PATH", programs.path().toUtf8());
        environment.unset("XDG_CURRENT_DESKTOP");
    }
    void SetUp() override {
        // The daemon is not among the test's own programs.
        test::ScopedEnvironment path;
        path.set("PATH", "/usr/local/bin:/usr/bin:/bin");
        BusTest::SetUp();
    }
    QString install(const char* name, const QByteArray& script = {}) {
        QFile file(programs.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return file.fileName();
    }
    DesktopWorkspace::Spawn recorder() {
        return [this](const QString& program, const QStringList& arguments) {
            started.push_back(QStringList{program} + arguments);
            return spawnWorks;
        };
    }

    test::ScopedEnvironment environment;
    QTemporaryDir programs;
    std::vector<QStringList> started;
    bool spawnWorks = true;
};

TEST_F(DesktopWorkspaceTest, opensWebAndMailAddresses) {
    const auto opener = install("xdg-open");
    DesktopWorkspace workspace(*bus, recorder(), Sandbox::none);
    workspace.open(QUrl(QStringLiteral("https://zofra.example/a b?x=1&y=\"2\"")));
    workspace.open(QUrl(QStringLiteral("mailto:radio@zofra.example?subject=Hi")));
    EXPECT_EQ(started,
              (std::vector<QStringList>{{opener, QStringLiteral("https://zofra.example/a%20b?x=1&y=%222%22")},
                                        {opener, QStringLiteral("mailto:radio@zofra.example?subject=Hi")}}));
}

TEST_F(DesktopWorkspaceTest, opensNothingElse) {
    install("xdg-open");
    DesktopWorkspace workspace(*bus, recorder(), Sandbox::none);
    for (const auto* url :
         {"", "file:///etc/passwd", "javascript:alert(1)", "--help", "smb://x/y", "https://[bad"})
        workspace.open(QUrl(QString::fromLatin1(url)));
    EXPECT_TRUE(started.empty());
}

TEST_F(DesktopWorkspaceTest, showsTheNetworkSettingsOfTheDesktop) {
    struct Case {
        const char* desktop;
        const char* program;
        QStringList arguments;
    };
    for (const auto& [desktop, program, arguments] : std::vector<Case>{
             {"GNOME", "gnome-control-center", {QStringLiteral("network")}},
             {"ubuntu:GNOME", "gnome-control-center", {QStringLiteral("network")}},
             {"KDE", "kcmshell5", {QStringLiteral("kcm_networkmanagement")}},
             {"KDE", "systemsettings", {QStringLiteral("kcm_networkmanagement")}},
             {"XFCE", "xfce4-settings-manager", {}},
             {"XFCE", "nm-connection-editor", {}},
             {"X-Cinnamon", "cinnamon-settings", {QStringLiteral("network")}},
         }) {
        const auto path = install(program);
        environment.set("XDG_CURRENT_DESKTOP", desktop);
        DesktopWorkspace workspace(*bus, recorder(), Sandbox::none);
        workspace.open(privacyPage);
        ASSERT_EQ(started.size(), 1U) << desktop;
        EXPECT_EQ(started[0], QStringList{path} + arguments);
        started.clear();
    }
}

TEST_F(DesktopWorkspaceTest, doesNothingWhereThereAreNoNetworkSettings) {
    install("xdg-open");
    DesktopWorkspace workspace(*bus, recorder(), Sandbox::none);
    workspace.open(privacyPage);
    environment.set("XDG_CURRENT_DESKTOP", "GNOME"); // Not installed.
    workspace.open(privacyPage);
    environment.set("XDG_CURRENT_DESKTOP", "sway");
    workspace.open(privacyPage);
    EXPECT_TRUE(started.empty());
}

TEST_F(DesktopWorkspaceTest, showsWhatToAllowWhereThereAreNoNetworkSettings) {
    const auto opener = install("xdg-open");
    QTemporaryDir data;
    ASSERT_TRUE(QDir(data.path()).mkpath(QStringLiteral("doc/zofrazofra")));
    QFile page(data.filePath(QStringLiteral("doc/zofrazofra/speakers.md")));
    ASSERT_TRUE(page.open(QIODevice::WriteOnly));
    environment.set("XDG_CURRENT_DESKTOP", "sway");
    environment.set("XDG_DATA_DIRS", data.path().toUtf8());
    DesktopWorkspace workspace(*bus, recorder(), Sandbox::none);
    workspace.open(privacyPage);
    EXPECT_EQ(started, (std::vector<QStringList>{{opener, page.fileName()}}));
}

class Portal {
public:
    explicit Portal(QDBusConnection& connection)
        : m_object(QStringLiteral("/org/freedesktop/portal/desktop"),
                   {{"org.freedesktop.portal.OpenURI",
                     {{"OpenURI", "parent_window:s uri:s options:a{sv}", "handle:o",
                       [this](const QVariantList& arguments) {
                           opened += arguments[1].toString();
                           return dbus::Answer{
                               {QVariant::fromValue(QDBusObjectPath(QStringLiteral("/request")))}, {}, {}};
                       }}},
                     {},
                     {}}}) {
        EXPECT_TRUE(m_object.exportOn(connection));
        EXPECT_TRUE(connection.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }
    QStringList opened;

private:
    dbus::ExportedObject m_object;
};

TEST_F(DesktopWorkspaceTest, asksThePortalInASandboxAndWhereThereIsNoOpener) {
    Portal portal(peer->connection());
    DesktopWorkspace without(*bus, recorder(), Sandbox::none);
    without.open(QUrl(QStringLiteral("https://a.example/")));
    ASSERT_TRUE(spinUntil([&] { return portal.opened.size() == 1; }));
    install("xdg-open");
    DesktopWorkspace inside(*bus, recorder(), Sandbox::portalOnly);
    inside.open(QUrl(QStringLiteral("https://b.example/")));
    ASSERT_TRUE(spinUntil([&] { return portal.opened.size() == 2; }));
    EXPECT_TRUE(started.empty());
    spawnWorks = false;
    without.open(QUrl(QStringLiteral("https://c.example/")));
    ASSERT_TRUE(spinUntil([&] { return portal.opened.size() == 3; }));
    EXPECT_EQ(portal.opened,
              (QStringList{QStringLiteral("https://a.example/"), QStringLiteral("https://b.example/"),
                           QStringLiteral("https://c.example/")}));
}

TEST_F(DesktopWorkspaceTest, startsTheRealOpenerQuietlyAndOnItsOwn) {
    const auto result = programs.filePath(QStringLiteral("result"));
    const auto done = programs.filePath(QStringLiteral("done"));
    install("xdg-open", "echo chatter; echo \"$1\" > " + result.toUtf8() + "; : > " + done.toUtf8() + "\n");
    testing::internal::CaptureStdout();
    DesktopWorkspace workspace(*bus);
    workspace.open(QUrl(QStringLiteral("https://zofra.example/")));
    EXPECT_TRUE(pollUntil([&] { return QFile::exists(done); }));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    QFile file(result);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("https://zofra.example/\n"));
}

} // namespace
} // namespace zofra
