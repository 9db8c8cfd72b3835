// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/XdgFolders.h"

#include "platform/linux/PreferredLanguages.h"
#include "tests/support/PrintQt.h"
#include "tests/support/ScopedEnvironment.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zofra {
namespace {

QStringList list(std::initializer_list<const char*> texts) {
    QStringList result;
    for (const auto* text : texts)
        result += QString::fromUtf8(text);
    return result;
}

TEST(XdgFoldersTest, findsTheUsersConfiguration) {
    test::ScopedEnvironment environment;
    environment.set("HOME", "/home/jef");
    environment.unset("XDG_CONFIG_HOME");
    EXPECT_EQ(xdg::configHome(), QStringLiteral("/home/jef/.config"));
    environment.set("XDG_CONFIG_HOME", "/conf/");
    EXPECT_EQ(xdg::configHome(), QStringLiteral("/conf"));
    environment.set("XDG_CONFIG_HOME", "relative");
    EXPECT_EQ(xdg::configHome(), QStringLiteral("/home/jef/.config"));
}

TEST(XdgFoldersTest, findsTheSystemsConfiguration) {
    test::ScopedEnvironment environment;
    environment.unset("XDG_CONFIG_DIRS");
    EXPECT_EQ(xdg::configDirs(), list({"/etc/xdg"}));
    environment.set("XDG_CONFIG_DIRS", "/a:relative::/b/");
    EXPECT_EQ(xdg::configDirs(), list({"/a", "/b"}));
    environment.set("XDG_CONFIG_DIRS", "relative");
    EXPECT_EQ(xdg::configDirs(), QStringList()) << "who sets it without /etc/xdg does not mean that";
    environment.set("XDG_CONFIG_DIRS", "");
    EXPECT_EQ(xdg::configDirs(), list({"/etc/xdg"}));
}

TEST(XdgFoldersTest, findsProgramsInThePathOnly) {
    test::ScopedEnvironment environment;
    QTemporaryDir folder;
    const auto program = folder.filePath(QStringLiteral("tool"));
    QFile file(program);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    environment.set("PATH", ".:/nowhere:" + folder.path().toUtf8());
    EXPECT_EQ(xdg::findProgram(QStringLiteral("tool")), QString()) << "it cannot be run yet";
    file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_EQ(xdg::findProgram(QStringLiteral("tool")), program);
    environment.set("PATH", ".");
    QDir::setCurrent(folder.path());
    EXPECT_EQ(xdg::findProgram(QStringLiteral("tool")), QString());
    QDir::setCurrent(QStringLiteral("/"));
}

TEST(PreferredLanguagesTest, areTheSystems) {
    test::ScopedEnvironment environment;
    for (const auto* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"})
        environment.unset(name);
    EXPECT_EQ(preferredLanguages(), QStringList());
    environment.set("LANG", "nl_BE.UTF-8");
    EXPECT_EQ(preferredLanguages(), list({"nl_BE.UTF-8"}));
    environment.set("LC_MESSAGES", "fr_BE");
    EXPECT_EQ(preferredLanguages(), list({"fr_BE"}));
    environment.set("LC_ALL", "de_BE");
    EXPECT_EQ(preferredLanguages(), list({"de_BE"}));
    environment.set("LANGUAGE", "fr:de");
    EXPECT_EQ(preferredLanguages(), list({"fr", "de", "de_BE"}));
    environment.set("LC_ALL", "C.UTF-8");
    EXPECT_EQ(preferredLanguages(), QStringList()) << "a neutral locale asks for no translation";
    environment.set("LC_ALL", "POSIX");
    EXPECT_EQ(preferredLanguages(), QStringList());
}

} // namespace
} // namespace zofra
