// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/ChildProcess.h"

#include <QCoreApplication>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zofra::test {

/// Runs the disabled test "NamespaceTest.DISABLED_`name`" of this program once more, in network and mount
/// namespaces of its own, after `setUp` (shell commands). The calling test is skipped where no namespace can
/// be made.
inline void runInNamespace(const QString& name, const QString& setUp) {
    const QStringList unshare{u"--user"_qs, u"--map-root-user"_qs, u"--net"_qs, u"--mount"_qs};
    if (runProgram(u"unshare"_qs, unshare + QStringList{u"true"_qs}) != 0)
        GTEST_SKIP() << "skipped: no namespace can be made here";
    const QTemporaryDir folder;
    const auto log = folder.filePath(u"output"_qs);
    const auto command = u"{ "_qs + setUp + u" ; } >'"_qs + log + u"' 2>&1 && exec timeout 60 "_qs +
                         QCoreApplication::applicationFilePath() +
                         u" --gtest_also_run_disabled_tests --gtest_filter=NamespaceTest.DISABLED_"_qs +
                         name + u" >>'"_qs + log + u"' 2>&1"_qs;
    const int status = runProgram(u"unshare"_qs, unshare + QStringList{u"sh"_qs, u"-c"_qs, command});
    QFile file(log);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const auto output = file.readAll();
    EXPECT_EQ(status, 0) << output.toStdString();
    EXPECT_TRUE(output.contains("[  PASSED  ] 1 test")) << output.toStdString();
}

} // namespace zofra::test
