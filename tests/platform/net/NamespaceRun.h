// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace zofra::test {

/// Runs the disabled test "InNamespace.DISABLED_`name`" of this program once more, in network and mount
/// namespaces of its own, after `setUp` (shell commands). The calling test is skipped where no namespace can
/// be made.
inline void runInNamespace(const QString& name, const QString& setUp) {
    const QStringList unshare{u"--user"_qs, u"--map-root-user"_qs, u"--net"_qs, u"--mount"_qs};
    if (QProcess::execute(u"unshare"_qs, unshare + QStringList{u"true"_qs}) != 0)
        GTEST_SKIP() << "skipped: no namespace can be made here";
    QProcess inner;
    inner.setProcessChannelMode(QProcess::MergedChannels);
    const auto command = setUp + u" && exec "_qs + QCoreApplication::applicationFilePath() +
                         u" --gtest_also_run_disabled_tests --gtest_filter=InNamespace.DISABLED_"_qs + name;
    inner.start(u"unshare"_qs, unshare + QStringList{u"sh"_qs, u"-c"_qs, command});
    ASSERT_TRUE(inner.waitForFinished(60'000));
    const auto output = inner.readAll();
    EXPECT_EQ(inner.exitCode(), 0) << output.toStdString();
    EXPECT_TRUE(output.contains("[  PASSED  ] 1 test")) << output.toStdString();
}

} // namespace zofra::test
