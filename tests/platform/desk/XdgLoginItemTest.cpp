// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/XdgLoginItem.h"

#include "platform/linux/DesktopEntry.h"
#include "tests/support/PrintQt.h"
#include "tests/support/ScopedEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zofra {
namespace {

class XdgLoginItemTest : public testing::Test {
protected:
    XdgLoginItemTest() {
        environment.set("XDG_CONFIG_HOME", folder.filePath(QStringLiteral("config")).toUtf8());
    }
    static void put(const QByteArray& bytes) {
        QDir().mkpath(QFileInfo(XdgLoginItem::filePath()).path());
        QFile file(XdgLoginItem::filePath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }
    static QByteArray content() {
        QFile file(XdgLoginItem::filePath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }

    test::ScopedEnvironment environment;
    QTemporaryDir folder;
    XdgLoginItem item{QStringLiteral("/bin/sh")};
};

TEST_F(XdgLoginItemTest, isOffAtFirst) {
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(XdgLoginItem::filePath(),
              folder.filePath(QStringLiteral("config/autostart/be.zofra.ZofraZofra.desktop")));
}

TEST_F(XdgLoginItemTest, writesAndRemovesTheFile) {
    EXPECT_TRUE(item.registerItem());
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(
        content(),
        QByteArray("[Desktop Entry]\nType=Application\nVersion=1.0\nName=Zofra Zofra\n"
                   "Icon=be.zofra.ZofraZofra\nTryExec=/bin/sh\nExec=/bin/sh\nTerminal=false\n"
                   "StartupNotify=false\nX-GNOME-Autostart-enabled=true\nX-KDE-autostart-after=panel\n"));
    EXPECT_TRUE(item.unregisterItem());
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(content(), QByteArray("(no file)"));
    EXPECT_TRUE(item.unregisterItem()) << "gone is gone";
}

TEST_F(XdgLoginItemTest, seesWhatDesktopsSee) {
    const QByteArray entry = "[Desktop Entry]\nType=Application\nName=Z\nExec=/bin/sh\n";
    const std::vector<std::pair<QByteArray, bool>> expected{
        {entry, true},
        {entry + "Hidden=true\n", false},
        {entry + "Hidden=false\n", true},
        {entry + " Hidden = true \r\n", false},
        {entry + "X-GNOME-Autostart-enabled=false\n", false},
        {entry + "X-GNOME-Autostart-enabled=true\n", true},
        {entry + "X-MATE-Autostart-enabled=false\n", false},
        {entry + "#Hidden=true\n", true},
        {entry + "[Other]\nHidden=true\n", true},
        {entry + "TryExec=/bin/sh\n", true},
        {entry + "TryExec=/nowhere/zofrazofra\n", false},
        {entry + "TryExec=no-such-program-here\n", false},
        {"[Desktop Entry]\nType=Application\n", false},
        {"", false},
    };
    for (const auto& [text, isEnabled] : expected) {
        put(text);
        EXPECT_EQ(item.isEnabled(), isEnabled) << text.toStdString();
    }
}

TEST_F(XdgLoginItemTest, switchesOnWhatASettingsDialogHadSwitchedOff) {
    put("[Desktop Entry]\nExec=/bin/sh\nHidden=true\n");
    EXPECT_TRUE(item.registerItem());
    EXPECT_TRUE(item.isEnabled());
}

TEST_F(XdgLoginItemTest, saysWhyItFailed) {
    QFile blocker(folder.filePath(QStringLiteral("config")));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    EXPECT_EQ(item.registerItem().error(),
              folder.filePath(QStringLiteral("config/autostart")) + QStringLiteral(": cannot be made"));
    EXPECT_FALSE(item.isEnabled());
    blocker.remove();

    QDir().mkpath(XdgLoginItem::filePath() + QStringLiteral("/full"));
    const auto done = item.registerItem();
    ASSERT_FALSE(done);
    EXPECT_TRUE(done.error().startsWith(XdgLoginItem::filePath() + QStringLiteral(": ")))
        << done.error().toStdString();
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(item.unregisterItem()) << "a folder is not removed";
}

TEST_F(XdgLoginItemTest, startsThisVeryProgram) {
    EXPECT_EQ(XdgLoginItem::runningProgram(),
              QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath());
}

TEST_F(XdgLoginItemTest, startsAProgramWithAnyPath) {
    const auto path = folder.filePath(QStringLiteral("a \"b\" $c 100% `d`\\e"));
    ASSERT_TRUE(QFile::copy(QStringLiteral("/bin/true"), path));
    EXPECT_TRUE(XdgLoginItem(path).registerItem());
    EXPECT_TRUE(XdgLoginItem(path).isEnabled());
}

TEST(DesktopEntryTest, quotesForExec) {
    const std::vector<std::pair<const char*, const char*>> expected{
        {"/usr/bin/zofrazofra", "/usr/bin/zofrazofra"},
        {"/opt/my radio/z", R"("/opt/my radio/z")"},
        {"/a\"b", R"("/a\\"b")"},
        {"/a$b", R"("/a\\$b")"},
        {"/a`b", R"("/a\\`b")"},
        {"/a\\b", R"("/a\\\\b")"},
        {"/100%", "/100%%"},
        {"/a'b", R"("/a'b")"},
        {"/a;b", R"("/a;b")"},
        {"/a\nb", R"("/a\nb")"},
        {"", R"("")"},
    };
    for (const auto& [argument, exec] : expected)
        EXPECT_EQ(desktopentry::execArgument(QString::fromLatin1(argument)), QString::fromLatin1(exec))
            << argument;
}

TEST(DesktopEntryTest, escapesStringsAndReadsThemBack) {
    for (const auto* text : {" a", "a ", " ", "\va\f", "a\\b", "a\nb\tc\rd", "plain", "a\\s"}) {
        const auto file =
            "[Desktop Entry]\nK=" + desktopentry::escapedString(QString::fromLatin1(text)).toUtf8();
        EXPECT_EQ(desktopentry::mainGroup(file).value(QStringLiteral("K")), QString::fromLatin1(text))
            << text;
    }
}

} // namespace
} // namespace zofra
