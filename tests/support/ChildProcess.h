// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace zofra::test {

/// A QProcess that forks as everybody does. By default the child runs in its parent's memory until it becomes
/// the program, and ThreadSanitizer, which does not expect that, would see no lock of this thread any more.
class ChildProcess final : public QProcess {
public:
    ChildProcess() {
        setChildProcessModifier([] {});
    }
};

/// Runs a program to its end; its exit status, or -1 where it could not be run. To be preferred where other
/// threads run: a process with threads that forks is more than ThreadSanitizer bears.
inline int runProgram(const QString& program, const QStringList& arguments) {
    std::vector<QByteArray> texts{program.toLocal8Bit()};
    for (const auto& argument : arguments)
        texts.push_back(argument.toLocal8Bit());
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (auto& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawnp(&child, pointers.front(), nullptr, nullptr, pointers.data(), environ) != 0)
        return -1;
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace zofra::test
